#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "render/RateFormatter.h"

namespace vostel {
namespace {

struct Row {
    double value;
    const char* bytes;
    const char* rate;
};

// Catches a wrong base, unit, number of decimals or separator, and figures that are not bounded.
TEST(RateFormatter, textsOfBytesAndRates) {
    // A comma locale must not change the texts; where it is not installed, "C" is in force anyway.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const double inf = std::numeric_limits<double>::infinity();
    const Row rows[] = {
        {0, "0.0\u2009B", "0.0\u2009B/s"},
        {-5, "0.0\u2009B", "0.0\u2009B/s"},
        {-0.0, "0.0\u2009B", "0.0\u2009B/s"},
        {std::nan(""), "0.0\u2009B", "0.0\u2009B/s"},
        {inf, "0.0\u2009B", "0.0\u2009B/s"},
        {99.94, "99.9\u2009B", "99.9\u2009B/s"},
        {100, "100\u2009B", "100\u2009B/s"},
        {1023, "1023\u2009B", "1023\u2009B/s"},
        {1024, "1.0\u2009KB", "1.0\u2009K/s"},
        {1536, "1.5\u2009KB", "1.5\u2009K/s"},
        {102400, "100\u2009KB", "100\u2009K/s"},
        {5.0 * 1024 * 1024, "5.0\u2009MB", "5.0\u2009M/s"},
        {2.5 * 1024 * 1024 * 1024, "2.5\u2009GB", "2.5\u2009G/s"},
        {std::pow(1024.0, 4), "1.0\u2009TB", "1.0\u2009T/s"},
        {std::pow(1024.0, 5) * 3, "3072\u2009TB", "3072\u2009T/s"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(RateFormatter::bytes(row.value), row.bytes) << row.value;
        EXPECT_EQ(RateFormatter::rate(row.value), row.rate) << row.value;
    }
    EXPECT_GT(RateFormatter::bytes(std::numeric_limits<double>::max()).size(), 290U);
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace
}  // namespace vostel
