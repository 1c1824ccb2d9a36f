// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataInFormat.h>

#include "DataFile.h"
#include "ReaderFixture.h"

#include <cerrno>
#include <cmath>

namespace Zorvan::AttributeContainer {

namespace {

template <class T>
void compareWithStream() {
    for (auto const& row : dataRows("serialization/numbers.txt")) {
        std::string const text = row[0];
        std::istringstream in(text), ours(text);
        T const read = DataInFormat<T>(ours, TEXT).take();
        T value{};
        in.imbue(std::locale::classic());
        in >> value;
        EXPECT_EQ(read, value) << row.place;
        EXPECT_EQ(std::signbit(static_cast<double>(read)), std::signbit(static_cast<double>(value)))
            << row.place;
        // A floating-point number beyond the range is no failure here.
        if (std::is_floating_point_v<T> &&
            std::abs(static_cast<double>(value)) >= static_cast<double>(std::numeric_limits<T>::max()))
            in.clear(in.rdstate() & ~std::ios_base::failbit);
        EXPECT_EQ(ours.rdstate(), in.rdstate()) << row.place;
        EXPECT_EQ(restOf(ours), restOf(in)) << row.place;
    }
}

} // namespace

TEST(DataInFormatTest, NumbersAreReadAsTheStreamOperatorReadsThem) {
    auto const compareAll = []<class... T>(T...) { (compareWithStream<T>(), ...); };
    compareAll(short{}, static_cast<unsigned short>(0), 0, 0U, std::int64_t{}, std::uint64_t{}, 0.F, 0.0);
}

TEST(DataInFormatTest, NumbersBeyondTheRangeAreNoFailure) {
    errno = 5;
    std::istringstream in("1e999 -1e999 1e-999");
    static_cast<void>(DataInFormat<Vec3d<double>>(in, TEXT).get());
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(errno, 5);
}

TEST(DataInFormatTest, BufferThatThrowsMakesTheStreamBad) {
    BreakingBuffer buffer("{ 1 2");
    std::istream in(&buffer);
    EXPECT_EQ(DataInFormat<std::vector<int>>(in, TEXT).get(), std::vector<int>{1});
    EXPECT_TRUE(in.bad());
    in.clear();
    in.exceptions(std::ios_base::badbit);
    EXPECT_THROW(DataInFormat<int>(in, TEXT).get(), std::ios_base::failure);
}

TEST(DataInFormatTest, LocalesAndFlagsOfTheStreamDoNotMatter) {
    OddGlobalLocale const odd;
    std::istringstream in("1234.5 12 { 7 } \"v\" 1.2.3.4");
    in.imbue(oddLocale());
    in >> std::hex >> std::noskipws;
    EXPECT_EQ(DataInFormat<double>(in, TEXT).get(), 1234.5);
    EXPECT_EQ(DataInFormat<int>(in, TEXT).get(), 12);
    EXPECT_EQ(DataInFormat<std::vector<int>>(in, TEXT).get(), std::vector<int>{7});
    EXPECT_EQ(DataInFormat<VersionNum>(in, TEXT).get().getReleaseNumbers(), "1.2.3.4");
}

} // namespace Zorvan::AttributeContainer
