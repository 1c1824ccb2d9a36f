// SPDX-License-Identifier: MIT
#include <AttributeContainer/Version.h>

#include "DataFile.h"
#include "StreamFixture.h"

using namespace Zorvan::AttributeContainer;

namespace {

VersionNum number(int major, int minor, int patch, int internal, int beta = 0) {
    return {"N", major, minor, patch, internal, beta, "r"};
}

std::string textOf(VersionNum const& v) { return v.name + v.getUIReleaseNumbers() + v.revision; }

std::string const atStart = textOf(*version.getAppVersion()) + textOf(VersionNum());

TEST(VersionNum, MaskingClearsLowerLevelsAndRevision) {
    VersionNum const full = number(1, -2, 3, 4, 5);
    std::string masked = textOf(full) + " " + full.getShortReleaseNumbers() + " ";
    for (auto const& each :
         {full.maskMinorLevel(), full.maskPatchLevel(), full.maskInternalLevel(), full.maskBetaLevel()})
        masked += textOf(each) + " ";
    EXPECT_EQ(masked, "N1.-2.3.4.5r 1.-2 N1.0.0.0 N1.-2.0.0 N1.-2.3.0 N1.-2.3.4 ");
}

TEST(VersionNum, NewerRanksVersionsUnderWayBelowOthersAsTheOrderDoesNot) {
    for (auto const& row : dataRows("foundation/versions.txt")) {
        if (row.section != "order")
            continue;
        std::string firstText = row[0], secondText = row[1];
        VersionNum first = number(0, 0, 0, 0), second = first;
        EXPECT_TRUE(first.setVersionNumbersFrom(firstText) && second.setVersionNumbersFrom(secondText));
        std::string holds = VersionNum::isVersionNumberNewer(first, second) ? "older" : "";
        holds += VersionNum::isVersionNumberNewer(second, first) ? " newer" : "";
        holds += first < second ? " less" : "";
        EXPECT_EQ(row[2], trimmed(holds + (first <= second ? " at most" : ""))) << row.place;
    }
}

/// What the stream operators give, literally.
bool readByOperators(std::istream& in, VersionNum& v) {
    char dot = 0;
    for (int* const level : {&v.major, &v.minor, &v.patch}) {
        in >> *level >> dot;
        if (in && dot != '.')
            in.putback(dot);
        if (!in || dot != '.')
            return false;
    }
    in >> v.internal;
    v.beta = 0;
    if (!in.eof() && in.peek() == '.')
        in >> dot >> v.beta;
    return true;
}

TEST(VersionNum, ParsingAgreesWithStreamOperators) {
    for (auto const& row : dataRows("foundation/versions.txt")) {
        if (row.section != "texts")
            continue;
        std::string const text = row[0];
        std::istringstream expectedIn(text), in(text);
        in.imbue(oddLocale());
        expectedIn.imbue(std::locale::classic());
        VersionNum expected = number(71, 72, 73, 74, 75), read = expected, fromText = expected;
        bool const isComplete = readByOperators(expectedIn, expected);
        EXPECT_EQ(read.setVersionNumbersFrom(in), isComplete) << text;
        EXPECT_EQ(textOf(read), textOf(expected)) << text;
        EXPECT_EQ(in.rdstate(), expectedIn.rdstate()) << text;

        std::string rest = text;
        EXPECT_EQ(fromText.setVersionNumbersFrom(rest), isComplete) << text;
        EXPECT_EQ(textOf(fromText), textOf(expected)) << text;
        EXPECT_EQ(rest, restOf(expectedIn)) << text;
        EXPECT_EQ(rest, restOf(in)) << text;
    }
}

TEST(VersionNum, StreamThatIsNotGoodIsNotReadAndOneThatBreaksIsBad) {
    VersionNum read = number(7, 7, 7, 7);
    std::istringstream ended("1.2.3.4");
    ended.setstate(std::ios_base::eofbit);
    EXPECT_FALSE(read.setVersionNumbersFrom(ended));
    EXPECT_TRUE(ended.fail());
    EXPECT_EQ(read.major, 7);

    BreakingBuffer buffer("1.2");
    std::istream in(&buffer);
    EXPECT_FALSE(read.setVersionNumbersFrom(in));
    EXPECT_TRUE(in.bad());
    BreakingBuffer another("1.2");
    std::istream asked(&another);
    asked.exceptions(std::ios_base::badbit);
    EXPECT_ANY_THROW(static_cast<void>(read.setVersionNumbersFrom(asked)));
    EXPECT_TRUE(asked.bad());
}

TEST(VersionNum, TextOperatorsEmptyTheNameAndKeepTheRest) {
    VersionNum read = number(0, 0, 0, 0, 9);
    std::string text = "1.2.3.4 rest";
    EXPECT_EQ(text >> read << read, " rest");
    EXPECT_EQ(textOf(read), "1.2.3.4r");
}

TEST(Version, GlobalRecordHoldsTheLibrarysVersions) {
    std::string all = atStart;
    for (auto const* read :
         {version.getAppVersion(), version.getFormatVersion(), version.getRootModelVersion(),
          version.getSocketVersion(), version.getApiVersion()})
        all += " " + textOf(*read);
    EXPECT_EQ(all,
              "WtLib9.1.0.0APPLICATION_VERSION_REVISIONWtLib9.1.0.0 WtLib9.1.0.0APPLICATION_VERSION_REVISION "
              "WtLib9.1.0.0 RootModel0.0.0.0 WtSocket1.10.0.0 API2.0.24.0");
    EXPECT_TRUE(version.isBetaCandidate() && !version.getSavedModelVersion());
}

TEST(Version, DefaultNumbersComeFromTheGlobalRecord) {
    VersionNum const format = *version.getFormatVersion(), app = *version.getAppVersion();
    version.setFormatVersion(number(5, 4, 3, 2, 1));
    version.setAppVersion({"Mine", 0, 0, 0, 0, 0, ""});
    VersionNum const byDefault;
    VersionNum const named(1, 2, 3, 4, 5, "x");
    version.setFormatVersion(format);
    version.setAppVersion(app);
    EXPECT_EQ("x", named.getRevision());
    EXPECT_EQ(textOf(byDefault) + textOf(named), "N5.4.3.2.1rMine1.2.3.4.5x");
}

TEST(Version, CopyHasItsOwnSavedVersion) {
    Version record(number(1, 0, 0, 0), number(2, 0, 0, 0), number(3, 0, 0, 0), number(4, 0, 0, 0),
                   number(5, 0, 0, 0), "pretty");
    record.setSavedModelVersion(number(6, 0, 0, 0));
    Version const copy(record);
    record.setSavedModelVersion(number(7, 0, 0, 0));
    record.setRootModelVersion(number(8, 0, 0, 0));
    record.setSocketVersion(number(9, 0, 0, 0));
    record.setApiVersion(number(0, 0, 0, 0));
    std::string majors = copy.getPrettyVersion();
    for (auto const* each :
         {copy.getAppVersion(), copy.getFormatVersion(), copy.getSocketVersion(), copy.getApiVersion(),
          copy.getRootModelVersion(), copy.getSavedModelVersion(), record.getSavedModelVersion(),
          record.getRootModelVersion(), record.getSocketVersion(), record.getApiVersion()})
        majors += std::to_string(each->major);
    EXPECT_EQ(majors, "pretty1234567890");
}

} // namespace
