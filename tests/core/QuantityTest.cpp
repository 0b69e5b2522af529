#include "core/quantity/MarkedFloat.h"

#include "core/quantity/Relation.h"
#include "core/quantity/Temperature.h"
#include "tests/Support.h"

using velmo::exp::MarkedFloat;
using namespace velmo::exp::quantity;

const auto marked = [](float value, unsigned mark) {
    MarkedFloat result(value);
    result.setMark(mark);
    return result;
};

TEST(MarkedFloat, CarriesAMarkBesideItsValue)
{
    EXPECT_EQ(sizeof(MarkedFloat), 4u);
    MarkedFloat humidity = marked(100.0f, 7);
    EXPECT_TRUE(humidity.mark() == 7 && float(humidity) == 100.0f); // not 100.00005
    humidity.setMark(2);
    EXPECT_EQ(humidity.mark(), 2u);
    EXPECT_EQ(MarkedFloat(std::nextafter(100.0f, 200.0f)).mark(), 0u); // its lowest bit was set
    EXPECT_THROW(humidity.setMark(8), velmo::exp::Exception);
    EXPECT_EQ(humidity.mark(), 2u);
}

TEST(MarkedFloat, ComparesValuesOnlyAlsoWithPlainNumbers)
{
    EXPECT_EQ(marked(20.5f, 7), marked(20.5f, 0));
    EXPECT_NE(marked(20.5f, 1), marked(20.75f, 1));
    EXPECT_FALSE(marked(20.5f, 7) != 20.5f);
    EXPECT_TRUE(0.0f == marked(-0.0f, 3) && marked(100.0f, 5) == 100);
    EXPECT_EQ(100.00001, marked(100.0f, 5)); // rounds to 100, as the float next to it does
    EXPECT_TRUE(marked(20.5f, 5) != 20.75 && 20 != marked(20.5f, 5));
}

TEST(MarkedFloat, KeepsWhatIsNoNumberAndWhatIsInfinite)
{
    // Only the lowest mantissa bit says that this is not an infinity.
    const std::uint32_t bits = 0x7f800001;
    float lowNan = 0;
    std::memcpy(&lowNan, &bits, 4);
    for (const float nan : {lowNan, std::numeric_limits<float>::quiet_NaN()}) {
        const MarkedFloat none = marked(nan, 7);
        EXPECT_TRUE(std::isnan(float(none)) && none.mark() == 7 && none != none && !(none == none));
    }
    EXPECT_EQ(float(marked(-INFINITY, 5)), -INFINITY);
    EXPECT_EQ(marked(INFINITY, 5), MarkedFloat(INFINITY));
}

TEST(Quantities, HoldAValueWithItsTexts)
{
    const Temperature<MarkedFloat> air(marked(21.5f, 3));
    EXPECT_EQ(air.value().mark(), 3u);
    EXPECT_TRUE(air == Temperature<MarkedFloat>(21.5f) && air != Temperature<MarkedFloat>());
    EXPECT_EQ(air.name() + air.unit(), "Temperature\u00b0C");
    const Relation<float> half(50.0f);
    EXPECT_TRUE(half.value() == 50 && half != Relation<float>());
    EXPECT_EQ(half.name() + half.unit(), "Relation%");
    EXPECT_EQ(Relation<MarkedFloat>().value(), 0);
}
