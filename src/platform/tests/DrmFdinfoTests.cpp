#include <gtest/gtest.h>

#include "platform/linux/DrmFdinfo.h"

namespace vostel {
namespace {

constexpr std::uint64_t kib = 1024;

// The sums catch a key of one driver or kernel that is misread, or read twice.
TEST(DrmFdinfoTest, DriversAndKernels) {
    struct Case {
        const char* what;
        const char* text;
        std::uint64_t client;
        std::uint64_t busy;  // of all engines
        std::size_t engines;
        std::uint64_t memory;
    };
    const Case cases[] = {
        {"amdgpu, old spelling",
         "pos:\t0\nflags:\t02100002\nmnt_id:\t26\nino:\t631\ndrm-driver:\tamdgpu\n"
         "drm-pdev:\t0000:08:00.0\ndrm-client-id:\t217\ndrm-memory-vram:\t2068 KiB\n"
         "drm-memory-gtt: \t8192 KiB\ndrm-memory-cpu: \t0 KiB\ndrm-engine-gfx:\t107322799 ns\n",
         217, 107322799, 1, 10260 * kib},
        {"amdgpu, all spellings of a region",
         "drm-driver:\tamdgpu\ndrm-client-id:\t9\ndrm-total-vram:\t4 MiB\ndrm-shared-vram:\t0\n"
         "drm-resident-vram:\t1 MiB\ndrm-memory-vram:\t3 MiB\ndrm-purgeable-vram:\t0\n"
         "amd-evicted-vram:\t0 KiB\ndrm-engine-gfx:\t5 ns\ndrm-engine-dec:\t6 ns\n",
         9, 11, 2, 1024 * kib},
        {"i915 with capacities",
         "drm-driver: i915\ndrm-client-id: 7\ndrm-pdev: 0000:00:02.0\ndrm-engine-render: 25 ns\n"
         "drm-engine-copy: 3 ns\ndrm-engine-video: 2 ns\ndrm-engine-capacity-video: 2\n"
         "drm-engine-video-enhance: 0 ns\ndrm-total-system0: 4096\n",
         7, 30, 4, 4 * kib},
        {"xe, cycles",
         "drm-driver:\txe\ndrm-client-id:\t41\ndrm-pdev:\t0000:00:02.0\n"
         "drm-total-cycles-rcs:\t9000\ndrm-cycles-rcs:\t900\ndrm-resident-gtt:\t1 KiB\n",
         41, 900, 1, kib},
        {"v3d",
         "drm-driver:\tv3d\ndrm-client-id:\t5\ndrm-engine-bin: \t10 ns\nv3d-jobs-bin: \t4\n"
         "drm-engine-render: \t20 ns\n",
         5, 30, 2, 0},
        {"a capacity without its engine, no blanks, no last line end",
         "drm-driver:msm\ndrm-client-id:1\ndrm-engine-capacity-gpu:0\ndrm-engine-x:1 ns", 1, 1, 1,
         0},
        {"garbage",
         "drm-driver:\tx\ndrm-client-id:\t-1\ndrm-client-id:\t3\ndrm-engine-a:\t12ns\n"
         "drm-engine-b:\t99999999999999999999 ns\ndrm-engine-:\t1 ns\ndrm-engine-c\t1 ns\n"
         "drm-engine-d:\t1 ms\ndrm-memory-x:\t18446744073709551615 MiB\n:\n:::\ndrm-\n\xff\xfe\n",
         3, 0, 0, 0},
    };
    for (const Case& example : cases) {
        SCOPED_TRACE(example.what);
        const auto info = parseDrmFdinfo(example.text);
        ASSERT_TRUE(info);
        std::uint64_t busy = 0;
        for (const DrmEngine& engine : info->engines) {
            busy += engine.busy.value_or(0) + engine.cycles.value_or(0);
            EXPECT_EQ(engine.capacity, engine.name == "video" ? 2u : 1u);
        }
        EXPECT_EQ(info->client, example.client);
        EXPECT_EQ(info->engines.size(), example.engines);
        EXPECT_EQ(busy, example.busy);
        EXPECT_EQ(info->memory, example.memory);
    }
    EXPECT_FALSE(parseDrmFdinfo(""));
    EXPECT_FALSE(parseDrmFdinfo("pos:\t0\nflags:\t02\neventfd-count: 1\ndrm-client-id: 1\n"));
}

TEST(DrmFdinfoTest, EndlessEnginesAreBounded) {
    std::string text = "drm-driver: x\n";
    for (int i = 0; i < 5000; ++i) {
        text += "drm-engine-e" + std::to_string(i) + ": 1 ns\n";
    }
    EXPECT_LE(parseDrmFdinfo(text)->engines.size(), 64u);
}

}  // namespace
}  // namespace vostel
