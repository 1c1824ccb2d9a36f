// SPDX-License-Identifier: MIT
#include <AttributeContainer/Version.h>

#include <gtest/gtest.h>

#include <istream>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

using namespace Zorvan::AttributeContainer;

namespace {

VersionNum number(int major, int minor, int patch, int internal, int beta = 0) {
    return {"N", major, minor, patch, internal, beta, "r"};
}

std::vector<int> levelsOf(VersionNum const& v) { return {v.major, v.minor, v.patch, v.internal, v.beta}; }

std::string const atStart = version.getAppVersion()->getReleaseNumbers() + VersionNum().name;

TEST(VersionNum, GlobalRecordIsThereInStaticInitialisers) { EXPECT_EQ(atStart, "9.1.0.0WtLib"); }

TEST(VersionNum, ReleaseNumbersShowBetaOnlyWhenThereIsOne) {
    EXPECT_EQ(number(9, 1, 0, 0).getReleaseNumbers(), "9.1.0.0");
    EXPECT_EQ(number(9, 1, 0, 0, 3).getUIReleaseNumbers(), "9.1.0.0.3");
    EXPECT_EQ(number(9, -1, 0, 0, 3).getShortReleaseNumbers(), "9.-1");
}

TEST(VersionNum, MaskingClearsLowerLevelsAndRevision) {
    VersionNum const full = number(1, 2, 3, 4, 5);
    std::vector<VersionNum> const masked = {full.maskMinorLevel(), full.maskPatchLevel(),
                                            full.maskInternalLevel(), full.maskBetaLevel()};
    std::vector<std::vector<int>> const expected = {
        {1, 0, 0, 0, 0}, {1, 2, 0, 0, 0}, {1, 2, 3, 0, 0}, {1, 2, 3, 4, 0}};
    for (std::size_t i = 0; i < masked.size(); ++i) {
        EXPECT_EQ(levelsOf(masked[i]), expected[i]);
        EXPECT_EQ(masked[i].name, "N");
        EXPECT_EQ(masked[i].getRevision(), "");
    }
}

TEST(VersionNum, NewerRanksVersionsUnderWayBelowOthers) {
    struct {
        VersionNum current, candidate;
        bool isNewer, isNewerBack;
    } const rows[] = {
        {number(9, 1, 100, 0), number(9, 1, 5, 0), true, false},
        {number(9, 1, 1000, 0), number(9, 1, 100, 0), true, false},
        {number(9, 1, 1000, 9), number(9, 1, 1000, 10), true, false},
        {number(9, 1, 5, 0), number(9, 1, 2000, 0), true, false},
        {number(9, 1, 6, 0), number(9, 1, 6, 0, 1), false, false},
        {number(8, 9, 9, 9), number(9, 0, 1000, 0), true, false},
        {number(9, 1, 7, 9), number(9, 2, 100, 0), true, false},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(VersionNum::isVersionNumberNewer(row.current, row.candidate), row.isNewer)
            << row.current.getReleaseNumbers() << " " << row.candidate.getReleaseNumbers();
        EXPECT_EQ(VersionNum::isVersionNumberNewer(row.candidate, row.current), row.isNewerBack)
            << row.candidate.getReleaseNumbers() << " " << row.current.getReleaseNumbers();
    }
}

TEST(VersionNum, OrderIgnoresBetaNameAndRevision) {
    VersionNum const other("O", 1, 2, 3, 4, 6, "");
    EXPECT_FALSE(number(1, 2, 3, 4, 5) < other);
    EXPECT_TRUE(number(1, 2, 3, 4, 5) <= other);
    EXPECT_TRUE(number(1, 2, 3, 3) < other);
    EXPECT_FALSE(number(2, 0, 0, 0) <= other);
}

/// What the stream operators give, literally.
bool readByOperators(std::istream& in, VersionNum& v) {
    char dot = 0;
    for (int* const level : {&v.major, &v.minor, &v.patch}) {
        in >> *level;
        if (!(in >> dot))
            return false;
        if (dot != '.') {
            in.putback(dot);
            return false;
        }
    }
    in >> v.internal;
    v.beta = 0;
    if (in.eof() || in.peek() != '.')
        return true;
    in >> dot >> v.beta;
    return true;
}

TEST(VersionNum, ParsingAgreesWithStreamOperators) {
    char const* const texts[] = {
        "9.1.2.3",
        "9.1.2.3.4",
        "9.1 and more",
        " 9 . 1\t.\n2 . 3 .4",
        "9.1.2.3 .4",
        "9.1.2.3.",
        "9.1.2.3. x",
        "9.1.2.",
        "9.1.2",
        "9.1.2 ",
        "9.",
        "9",
        "",
        "   ",
        "x",
        "-",
        "+",
        "+1.-2.+3.-4",
        "1.x.2.3",
        "99999999999.1.2.3",
        "1.2.3.x",
        "1.2.3.4x",
        "1,2.3.4",
        "007.010.0x1.3",
        "1.2.3.-2147483648",
        "1.2.3.-2147483649",
        "1.2.3.2147483647.2147483648",
        "1..2.3",
        "1.2.3.4.5.6",
        "- 1.2.3.4",
    };
    for (char const* const text : texts) {
        std::istringstream expectedIn(text), in(text);
        VersionNum expected = number(71, 72, 73, 74, 75), read = expected, fromText = expected;
        bool const isComplete = readByOperators(expectedIn, expected);
        EXPECT_EQ(read.setVersionNumbersFrom(in), isComplete) << text;
        EXPECT_EQ(levelsOf(read), levelsOf(expected)) << text;
        EXPECT_EQ(in.rdstate(), expectedIn.rdstate()) << text;

        std::string rest = text;
        EXPECT_EQ(fromText.setVersionNumbersFrom(rest), isComplete) << text;
        EXPECT_EQ(levelsOf(fromText), levelsOf(expected)) << text;
        in.clear();
        expectedIn.clear();
        std::string const unread(std::istreambuf_iterator<char>(expectedIn), {});
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), unread) << text;
        EXPECT_EQ(rest, unread) << text;
    }
}

TEST(VersionNum, LocaleOfTheStreamDoesNotMatter) {
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    std::istringstream in("1.2.3.4.5");
    in.imbue(std::locale(std::locale::classic(), new Grouped));
    VersionNum read = number(0, 0, 0, 0);
    EXPECT_TRUE(read.setVersionNumbersFrom(in));
    EXPECT_EQ(levelsOf(read), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(VersionNum, StreamThatIsNotGoodIsNotRead) {
    std::istringstream in("1.2.3.4");
    in.setstate(std::ios_base::eofbit);
    VersionNum read = number(7, 7, 7, 7);
    EXPECT_FALSE(read.setVersionNumbersFrom(in));
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(read.major, 7);
}

TEST(VersionNum, ExceptionOfTheBufferShowsAsBadStream) {
    struct Broken : std::streambuf {
        int_type underflow() override { throw std::runtime_error("cable"); }
    };
    Broken buffer;
    std::istream in(&buffer);
    VersionNum read = number(7, 7, 7, 7);
    EXPECT_FALSE(read.setVersionNumbersFrom(in));
    EXPECT_TRUE(in.bad());
    std::istream strict(&buffer);
    strict.exceptions(std::ios_base::badbit);
    EXPECT_THROW(read.setVersionNumbersFrom(strict), std::runtime_error);
}

TEST(VersionNum, TextOperatorsEmptyTheNameAndKeepTheRest) {
    std::string text = "1.2.3.4 rest";
    VersionNum read = number(0, 0, 0, 0);
    EXPECT_EQ(&(text >> read), &text);
    EXPECT_EQ(text, " rest");
    EXPECT_EQ(read.name, "");
    EXPECT_EQ(levelsOf(read), (std::vector<int>{1, 2, 3, 4, 0}));
    EXPECT_EQ(text << read, " rest");
}

TEST(Version, GlobalRecordHoldsTheLibrarysVersions) {
    struct {
        VersionNum const* read;
        char const *name, *numbers, *revision;
    } const rows[] = {
        {version.getAppVersion(), "WtLib", "9.1.0.0", "APPLICATION_VERSION_REVISION"},
        {version.getFormatVersion(), "WtLib", "9.1.0.0", ""},
        {version.getRootModelVersion(), "RootModel", "0.0.0.0", ""},
        {version.getSocketVersion(), "WtSocket", "1.10.0.0", ""},
        {version.getApiVersion(), "API", "2.0.24.0", ""},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(row.read->name, row.name);
        EXPECT_EQ(row.read->getReleaseNumbers(), row.numbers);
        EXPECT_EQ(row.read->getRevision(), row.revision);
    }
    EXPECT_EQ(version.getSavedModelVersion(), nullptr);
    EXPECT_EQ(version.getPrettyVersion(), "");
    EXPECT_TRUE(version.isBetaCandidate());
    EXPECT_EQ(attributeContainergetVersionString(), nullptr);
}

TEST(Version, DefaultNumbersComeFromTheGlobalRecord) {
    VersionNum const format = *version.getFormatVersion(), app = *version.getAppVersion();
    version.setFormatVersion(number(5, 4, 3, 2, 1));
    version.setAppVersion({"Mine", 0, 0, 0, 0, 0, ""});
    VersionNum const byDefault;
    VersionNum const named(1, 2, 3, 4, 5, "x");
    version.setFormatVersion(format);
    version.setAppVersion(app);
    EXPECT_EQ(levelsOf(byDefault), (std::vector<int>{5, 4, 3, 2, 1}));
    EXPECT_EQ(byDefault.name, "N");
    EXPECT_EQ(byDefault.revision, "r");
    EXPECT_EQ(named.name, "Mine");
    EXPECT_EQ(levelsOf(named), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(Version, CopyHasItsOwnSavedVersion) {
    Version record(number(1, 0, 0, 0), number(2, 0, 0, 0), number(3, 0, 0, 0), number(4, 0, 0, 0),
                   number(5, 0, 0, 0), "pretty");
    EXPECT_EQ(Version(record).getSavedModelVersion(), nullptr);
    record.setSavedModelVersion(number(6, 0, 0, 0));
    Version const copy(record);
    record.setSavedModelVersion(number(7, 0, 0, 0));
    record.setSocketVersion(number(30, 0, 0, 0));
    record.setApiVersion(number(40, 0, 0, 0));
    record.setRootModelVersion(number(50, 0, 0, 0));
    auto const majors = [](Version const& v) {
        return std::vector<int>{v.getAppVersion()->major,       v.getFormatVersion()->major,
                                v.getSocketVersion()->major,    v.getApiVersion()->major,
                                v.getRootModelVersion()->major, v.getSavedModelVersion()->major};
    };
    EXPECT_EQ(majors(copy), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(majors(record), (std::vector<int>{1, 2, 30, 40, 50, 7}));
    EXPECT_EQ(copy.getPrettyVersion(), "pretty");
}

} // namespace
