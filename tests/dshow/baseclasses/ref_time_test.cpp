// CRefTime's conversions between 100-ns units and milliseconds.
#include <gtest/gtest.h>

#include "dshow/baseclasses/ref_time.h"

namespace {

TEST(RefTime, MillisecondsAreTenThousandUnitsAndRoundTowardsZero)
{
    const struct {
        REFERENCE_TIME units;
        LONG millisecs;
    } cases[] = {
        {0, 0},
        {10'000, 1},
        {19'999, 1},
        {25'000'000, 2'500},
        {-19'999, -1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CRefTime(c.units).Millisecs(), c.millisecs) << c.units;
    EXPECT_EQ(CRefTime::FromMillisecs(1'500).GetUnits(), 15'000'000);
    CRefTime sum = CRefTime::FromMillisecs(40);
    sum += CRefTime(UNITS);
    EXPECT_EQ(sum.Millisecs(), 1'040);
    EXPECT_GT(MAX_TIME, sum);
}

}  // namespace
