#include <gtest/gtest.h>

#include "platform/linux/ProcStatSource.h"

namespace vostel {
namespace {

TEST(ProcStatSourceTest, CpuListsOfSysfs) {
    EXPECT_EQ(parseCpuList("0-2,5,7-8\n"), (std::set<int>{0, 1, 2, 5, 7, 8}));
    EXPECT_EQ(parseCpuList(""), std::set<int>{});
    EXPECT_EQ(parseCpuList("x,3-,4"), std::set<int>{4});
    EXPECT_LE(parseCpuList("0-99999999999").size(), 8192u);
}

}  // namespace
}  // namespace vostel
