#include <gtest/gtest.h>

#include "platform/linux/DrmGPUSource.h"
#include "platform/linux/NvidiaGPUSource.h"
#include "platform/tests/GPUTree.h"

namespace vostel {
namespace {

std::string fdinfo(const std::string& driver, int client, const std::string& more) {
    return "pos:\t0\nflags:\t02100002\ndrm-driver:\t" + driver + "\ndrm-client-id:\t" +
           std::to_string(client) + "\n" + more;
}

std::string engine(const std::string& name, std::int64_t milliseconds) {
    return "drm-engine-" + name + ":\t" + std::to_string(milliseconds * 1'000'000) + " ns\n";
}

GPURequest look(double now) {
    return {.now = now, .interval = 1, .detailed = true};
}
GPURequest glance(double now) {
    return {.now = now, .interval = 1, .detailed = false};
}

TEST(DrmGPUSourceTest, AmdDesktop) {
    GPUTree tree;
    const std::string card = tree.add({.device = "0000:03:00.0",
                                       .driver = "amdgpu",
                                       .attributes = {{"gpu_busy_percent", "37\n"},
                                                      {"mem_busy_percent", "4\n"},
                                                      {"mem_info_vram_used", "2000000000\n"},
                                                      {"mem_info_vram_total", "8000000000\n"},
                                                      {"mem_info_gtt_used", "50000000\n"}}});
    tree.holds(900, "Xwayland", 7, "renderD128", fdinfo("amdgpu", 1, engine("dec", 0)));
    tree.file("proc/900/fd/x", "");
    tree.file("proc/meminfo", "");
    DrmGPUSource source(tree.roots());
    OpenWatch processes(tree.root / "proc");
    const auto first = source.read(glance(1));
    ASSERT_EQ(first.accelerators.size(), 1u);
    EXPECT_EQ(first.accelerators[0].id, "0000:03:00.0");
    EXPECT_DOUBLE_EQ(*first.accelerators[0].statistics->device, 37);
    EXPECT_DOUBLE_EQ(*first.accelerators[0].statistics->renderer, 37);
    EXPECT_DOUBLE_EQ(*first.accelerators[0].statistics->inUse, 2e9) << "VRAM alone";
    EXPECT_DOUBLE_EQ(*first.accelerators[0].statistics->memoryAll, 8e9);
    EXPECT_TRUE(processes.opened().empty()) << "the card counts by itself and nobody looks";

    source.read(look(2));
    tree.file("proc/900/fdinfo/7", fdinfo("amdgpu", 1, engine("dec", 600)));
    const auto detailed = source.read(look(3));
    EXPECT_DOUBLE_EQ(*detailed.accelerators[0].statistics->device, 60) << "the video engine";
    ASSERT_EQ(detailed.accelerators[0].clients.size(), 1u);
    EXPECT_EQ(detailed.accelerators[0].clients[0].creator, "pid 900, Xwayland");
    EXPECT_EQ(detailed.accelerators[0].clients[0].accumulatedGPUTime, std::vector{600e6});

    std::filesystem::remove(tree.root / card / "mem_busy_percent");
    EXPECT_DOUBLE_EQ(*source.read(glance(4)).accelerators[0].statistics->inUse, 2.05e9)
        << "built-in graphics lives in system memory";
    EXPECT_DOUBLE_EQ(*source.read(glance(5)).accelerators[0].statistics->device, 37)
        << "what clients used a while ago is no load now";
}

struct IntelCase {
    const char* driver;
    std::vector<const char*> counters;  // one for each GT
};

// The load is of the GT that idled least; a gap and a counter that starts anew give no spike.
TEST(DrmGPUSourceTest, IntelResidency) {
    const IntelCase cases[] = {
        {"i915", {"drm/card0/gt/gt0/rc6_residency_ms"}},
        {"i915", {"drm/card0/power/rc6_residency_ms"}},
        {"i915", {"drm/card0/gt/gt0/rc6_residency_ms", "drm/card0/gt/gt1/rc6_residency_ms"}},
        {"xe", {"tile0/gt0/gtidle/idle_residency_ms", "tile0/gt1/gtidle/idle_residency_ms"}},
    };
    for (const IntelCase& example : cases) {
        SCOPED_TRACE(example.counters.front());
        GPUTree tree;
        const std::string card = tree.add({.device = "0000:00:02.0", .driver = example.driver});
        const auto set = [&](int idle) {
            for (const char* counter : example.counters) {
                tree.file(card + counter, std::to_string(idle) + "\n");
                idle += 200000;  // another GT, another count
            }
        };
        struct Step {
            double at;
            int idle;
            double percent;
        };
        DrmGPUSource source(tree.roots());
        for (const Step& step :
             {Step{0, 5000, 0}, Step{1, 5600, 40}, Step{2, 6700, 0}, Step{500, 6800, 0},
              Step{501, 7500, 30}, Step{502, 0, 0}, Step{503, 900, 10}}) {
            set(step.idle);
            EXPECT_FALSE(source.isSlow(glance(step.at))) << "belongs on no thread";
            const auto reading = source.read(glance(step.at));
            EXPECT_NEAR(*reading.accelerators.at(0).statistics->device, step.percent, 1e-6)
                << "at " << step.at;
            ASSERT_EQ(reading.accelerators[0].residency.size(), 1u);
        }
        set(1900);
        const bool two = example.counters.size() > 1;
        if (two) {
            tree.file(card + example.counters.back(), "201200\n");
        }
        EXPECT_NEAR(*source.read(glance(504)).accelerators[0].statistics->device, two ? 70 : 0,
                    1e-6);
    }
}

TEST(DrmGPUSourceTest, XeClients) {
    GPUTree tree;
    tree.add({.device = "0000:00:02.0",
              .driver = "xe",
              .attributes = {{"tile0/gt0/gtidle/idle_residency_ms", "0\n"}}});
    const auto set = [&](int busy, int all) {
        tree.holds(50, "gnome-shell", 9, "card0",
                   fdinfo("xe", 3,
                          "drm-pdev:\t0000:00:02.0\ndrm-cycles-rcs:\t" + std::to_string(busy) +
                              "\ndrm-total-cycles-rcs:\t" + std::to_string(all) +
                              "\ndrm-resident-system:\t64 MiB\n"));
    };
    DrmGPUSource source(tree.roots());
    set(0, 0);
    source.read(look(1));
    set(19200 * 250, 19200 * 1000);
    const auto reading = source.read(look(2));
    EXPECT_NEAR(*reading.accelerators.at(0).statistics->renderer, 25, 1e-6);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->inUse, 64 << 20);
    EXPECT_NEAR(reading.accelerators[0].clients.at(0).accumulatedGPUTime.at(0), 250e6, 1);
}

// The proof that a card that sleeps is left in peace: the kernel reports every file opened.
TEST(DrmGPUSourceTest, SleepingCardsAreNotTouched) {
    for (const char* driver : {"nvidia", "amdgpu", "xe"}) {
        SCOPED_TRACE(driver);
        GPUTree tree;
        tree.add({.device = "0000:00:02.0",
                  .driver = "i915",
                  .attributes = {{"drm/card0/gt/gt0/rc6_residency_ms", "1\n"}}});
        const std::string sleeper = tree.add({.device = "0000:01:00.0",
                                              .driver = driver,
                                              .card = 1,
                                              .render = 129,
                                              .attributes = {{"vendor", "0x10de\n"},
                                                             {"gpu_busy_percent", "9\n"},
                                                             {"mem_info_vram_used", "9\n"},
                                                             {"boot_vga", "0\n"},
                                                             {"hwmon/hwmon1/temp1_input", "9\n"}}});
        tree.file(sleeper + "power/runtime_status", "suspended\n");
        tree.file(sleeper + "drm/card1/card1-HDMI-A-1/dpms", "Off\n");
        tree.link("sys/class/drm/card1-HDMI-A-1",
                  "../../devices/pci0000:00/0000:01:00.0/drm/card1/card1-HDMI-A-1");
        tree.holds(70, "game", 4, "renderD129", fdinfo(driver, 1, engine("gfx", 5)));
        tree.holds(71, "shell", 4, "renderD128", fdinfo("i915", 2, engine("render", 5)));
        tree.file("lib/libnvidia-ml.so.1", "not a library: opening it is what counts");
        DrmGPUSource drm(tree.roots());
        NvidiaGPUSource nvidia(tree.roots(), tree.root / "lib/libnvidia-ml.so.1");
        OpenWatch device(tree.root / sleeper);
        OpenWatch game(tree.root / "proc/70/fdinfo");
        OpenWatch library(tree.root / "lib");
        for (int second = 0; second < 40; ++second) {
            for (const auto& request : {glance(second), look(second + 0.5)}) {
                EXPECT_FALSE(nvidia.isSlow(request));
                auto all = drm.read(request).accelerators;
                const auto others = nvidia.read(request).accelerators;
                all.insert(all.end(), others.begin(), others.end());
                ASSERT_EQ(all.size(), 2u);
                EXPECT_FALSE(all[0].asleep);
                EXPECT_TRUE(all[1].asleep);
                EXPECT_DOUBLE_EQ(*all[1].statistics->device, 0);
                EXPECT_TRUE(all[1].clients.empty());
            }
        }
        const std::string power = (tree.root / sleeper).string() + "power/";
        EXPECT_EQ(device.opened(), std::set<std::string>{power + "runtime_status"});
        EXPECT_TRUE(game.opened().empty());
        EXPECT_TRUE(library.opened().empty());
        tree.file(sleeper + "power/runtime_status", "active\n");
        library.opened();
        nvidia.read(glance(41));
        EXPECT_EQ(library.opened().empty(), std::string(driver) != "nvidia") << "the watch works";
    }
}

// Asking keeps a card awake: an idle one without a display is asked for `lingers`, then not for
// `rests`, then once more.
TEST(DrmGPUSourceTest, IdleCardsAreLeftAlone) {
    struct Case {
        const char* what;
        const char* control;
        const char* dpms;
        const char* busy;
        bool left;
    };
    for (const Case& example : {Case{"may power down", "auto", "Off", "0\n", true},
                                Case{"works", "auto", "Off", "50\n", false},
                                Case{"never powers down", "on", "Off", "0\n", false},
                                Case{"shows a picture", "auto", "On", "0\n", false}}) {
        SCOPED_TRACE(example.what);
        GPUTree tree;
        const std::string card = tree.add({.device = "0000:03:00.0",
                                           .driver = "amdgpu",
                                           .attributes = {{"gpu_busy_percent", example.busy}}});
        tree.file(card + "power/control", std::string(example.control) + "\n");
        tree.file("sys/class/drm/card0-DP-1/enabled", "enabled\n");
        tree.file("sys/class/drm/card0-DP-1/dpms", std::string(example.dpms) + "\n");
        DrmGPUSource source(tree.roots());
        OpenWatch watch(tree.root / card);
        const auto asked = [&](const GPURequest& request) {
            source.read(request);
            return watch.opened().contains((tree.root / card).string() + "gpu_busy_percent");
        };
        for (int second = 0; second <= 10; ++second) {
            EXPECT_TRUE(asked(glance(second)));
        }
        for (int second = 11; second < 30; ++second) {
            EXPECT_NE(asked(glance(second)), example.left) << second;
        }
        EXPECT_TRUE(asked(glance(30))) << "the rest is over";
        EXPECT_NE(asked(glance(31)), example.left);
        EXPECT_TRUE(asked(look(32))) << "someone looks";
    }
}

// v3d powers down between frames and its clients go on to count; vc4 shows the picture alone.
TEST(DrmGPUSourceTest, RaspberryPi) {
    GPUTree tree;
    const std::string card = tree.add({.device = "fec00000.gpu", .driver = "v3d"});
    tree.add({.device = "gpu", .driver = "vc4-drm", .card = 1, .render = -1});
    tree.file(card + "power/runtime_status", "suspended\n");
    const auto set = [&](int bin, int render) {
        tree.holds(40, "labwc", 5, "renderD128",
                   fdinfo("v3d", 8, engine("bin", bin) + engine("render", render)));
    };
    set(0, 0);
    DrmGPUSource source(tree.roots());
    EXPECT_TRUE(source.isSlow(glance(0)));
    source.read(glance(0));
    EXPECT_TRUE(source.isSlow(glance(0.25))) << "a first walk has nothing to compare with";
    EXPECT_TRUE(source.read(glance(0.25)).accelerators.at(0).measured);
    set(500, 2000);
    EXPECT_FALSE(source.isSlow(glance(4))) << "clients are walked every 5 s";
    EXPECT_DOUBLE_EQ(*source.read(glance(4)).accelerators.at(0).statistics->device, 0);
    auto reading = source.read(glance(5.25));
    ASSERT_EQ(reading.accelerators.size(), 2u);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->device, 40);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->renderer, 40);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->tiler, 10);
    EXPECT_FALSE(reading.accelerators[0].asleep);
    EXPECT_FALSE(reading.accelerators[1].statistics) << "no engine, no load";
    EXPECT_DOUBLE_EQ(*source.read(glance(6)).accelerators[0].statistics->device, 40) << "kept";
    std::filesystem::remove_all(tree.root / "proc/40");
    reading = source.read(look(7));
    EXPECT_TRUE(reading.accelerators[0].asleep);
    EXPECT_DOUBLE_EQ(*reading.accelerators[0].statistics->device, 0);
    EXPECT_TRUE(reading.accelerators[0].clients.empty());
}

// What is shown first: the load between two readings, a quarter of a second apart.
TEST(DrmGPUSourceTest, TheSecondReadingHasTheLoad) {
    for (const bool intel : {false, true}) {
        GPUTree tree;
        const std::string card =
            tree.add({.device = "0000:00:02.0", .driver = intel ? "i915" : "panthor"});
        const auto set = [&](int busy) {  // milliseconds since some start
            tree.holds(70, "game", 4, "renderD128", fdinfo("panthor", 1, engine("panthor", busy)));
            if (intel) {
                tree.file(card + "drm/card0/gt/gt0/rc6_residency_ms",
                          std::to_string(9000 - busy) + "\n");
            }
        };
        set(1000);
        DrmGPUSource source(tree.roots());
        const auto first = source.read(glance(10)).accelerators.at(0);
        EXPECT_FALSE(first.measured);
        EXPECT_DOUBLE_EQ(*first.statistics->device, 0);
        set(intel ? 900 : 1100);  // 40 % of 250 ms, or idle for 100 of them
        const auto second = source.read(glance(10.25)).accelerators.at(0);
        EXPECT_TRUE(second.measured);
        EXPECT_NEAR(*second.statistics->device, intel ? 60 : 40, 1e-6);
        const auto third = source.read(look(10.251)).accelerators.at(0);
        EXPECT_NEAR(*third.statistics->device, intel ? 60 : 40, 1e-6)
            << "measured over a millisecond, because the popover opened";
    }
}

// Not a load of 0, and not a machine without a GPU: nobody could look.
TEST(DrmGPUSourceTest, WhatCannotBeReadIsSaid) {
    GPUTree tree;
    tree.add({.device = "0000:00:02.0", .driver = "panthor"});
    DrmGPUSource source(tree.roots());
    EXPECT_TRUE(source.read(glance(0)).accelerators.at(0).statistics);
    EXPECT_EQ(source.health.error(), "");
    std::filesystem::rename(tree.root / "proc", tree.root / "elsewhere");
    EXPECT_FALSE(source.read(glance(6)).accelerators.at(0).statistics);
    EXPECT_EQ(source.health.error(),
              "cannot read " + (tree.root / "proc").string() + ": No such file or directory");
    std::filesystem::rename(tree.root / "elsewhere", tree.root / "proc");
    EXPECT_TRUE(source.read(glance(12)).accelerators.at(0).statistics);
    EXPECT_EQ(source.health.error(), "");
    EXPECT_NE(source.health.lastError(), "");
    std::filesystem::remove_all(tree.root / "sys/class/drm");
    tree.file("sys/class/drm", "");
    EXPECT_TRUE(source.read(glance(40)).accelerators.empty());
    EXPECT_EQ(source.health.error(),
              "cannot read " + (tree.root / "sys/class/drm").string() + ": Not a directory");
}

// A process that opens a device late is found; a descriptor that now is something else is dropped.
TEST(DrmGPUSourceTest, DescriptorsComeAndGo) {
    GPUTree tree;
    tree.add({.device = "0000:00:02.0", .driver = "panthor"});
    tree.file("proc/60/comm", " \n");
    tree.link("proc/60/fd/3", "/dev/null");
    DrmGPUSource source(tree.roots());
    int second = 0;
    for (; second < 10; ++second) {
        EXPECT_TRUE(source.read(look(second)).accelerators.at(0).clients.empty());
    }
    tree.holds(60, " ", 4, "renderD128", fdinfo("panthor", 1, engine("panthor", 1)));
    for (int until = second + 8; second < until; ++second) {
        source.read(look(second));
    }
    ASSERT_EQ(source.read(look(second)).accelerators[0].clients.size(), 1u);
    EXPECT_EQ(source.read(look(second)).accelerators[0].clients[0].creator, "pid 60, process 60");
    tree.file("proc/60/fdinfo/4", "pos:\t0\n");
    EXPECT_TRUE(source.read(look(++second)).accelerators[0].clients.empty());
}

// A virtual machine's display is no reason to look through all processes every 5 s.
TEST(DrmGPUSourceTest, DisplayWithoutEngines) {
    GPUTree tree;
    tree.add({.device = "virtio0", .driver = "virtio_gpu"});
    DrmGPUSource source(tree.roots());
    for (int second = 0; second < 30; second += 6) {
        EXPECT_EQ(source.isSlow(glance(second)), second == 0);
        EXPECT_FALSE(source.read(glance(second)).accelerators.at(0).statistics);
    }
}

TEST(DrmGPUSourceTest, NoGPU) {
    for (const bool withFolder : {true, false}) {
        GPUTree tree;
        if (!withFolder) {
            std::filesystem::remove_all(tree.root / "sys");
        }
        DrmGPUSource drm(tree.roots());
        NvidiaGPUSource nvidia(tree.roots(), "libnvidia-ml.so.1");
        EXPECT_FALSE(drm.isSlow(look(1)));
        EXPECT_FALSE(nvidia.isSlow(look(1)));
        EXPECT_TRUE(drm.read(look(1)).accelerators.empty());
        EXPECT_TRUE(nvidia.read(look(1)).accelerators.empty());
    }
}

}  // namespace
}  // namespace vostel
