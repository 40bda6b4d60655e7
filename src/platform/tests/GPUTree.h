#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/SystemRoots.h"

namespace vostel {

// A temporary /sys and /proc in the layout of the kernel: devices with links from class and bus.
class GPUTree {
  public:
    GPUTree() {
        std::string name = (std::filesystem::temp_directory_path() / "vostel-gpu-XXXXXX").string();
        root = mkdtemp(name.data());
        std::filesystem::create_directories(root / "sys/class/drm");
        std::filesystem::create_directories(root / "proc");
    }
    ~GPUTree() { std::filesystem::remove_all(root); }
    GPUTree(const GPUTree&) = delete;
    GPUTree& operator=(const GPUTree&) = delete;

    SystemRoots roots() const {
        return {.proc = root / "proc", .sys = root / "sys", .home = {}, .dataDirs = {}};
    }

    // Paths begin at the root: "sys/...".
    void file(const std::string& path, const std::string& text) const {
        std::filesystem::create_directories((root / path).parent_path());
        std::ofstream(root / path, std::ios::trunc) << text;
    }
    void link(const std::string& path, const std::string& target) const {
        std::filesystem::create_directories((root / path).parent_path());
        std::filesystem::remove(root / path);
        std::filesystem::create_symlink(target, root / path);
    }

    // A device with its attributes, and the card, render node (number < 0: none) and driver of it.
    struct Card {
        std::string device;  // "0000:03:00.0"
        std::string driver;
        int card = 0;
        int render = 128;
        std::map<std::string, std::string> attributes = {};  // below the device
    };
    std::string add(const Card& card) const {
        const std::string folder = "sys/devices/pci0000:00/" + card.device;
        const std::string driver = "sys/bus/pci/drivers/" + card.driver;
        std::filesystem::create_directories(root / driver);
        file(folder + "/power/runtime_status", "active\n");
        file(folder + "/power/control", "auto\n");
        for (const auto& [name, text] : card.attributes) {
            file(folder + "/" + name, text);
        }
        link(folder + "/driver", "../../../bus/pci/drivers/" + card.driver);
        link(driver + "/" + card.device, "../../../../devices/pci0000:00/" + card.device);
        for (const auto& [prefix, number] :
             {std::pair("card", card.card), std::pair("renderD", card.render)}) {
            if (number >= 0) {
                const std::string node = prefix + std::to_string(number);
                file(folder + "/drm/" + node + "/uevent", "");
                link(folder + "/drm/" + node + "/device", "../../../" + card.device);
                link("sys/class/drm/" + node,
                     "../../devices/pci0000:00/" + card.device + "/drm/" + node);
            }
        }
        return folder + "/";
    }

    // A process that holds `node`, with what its fdinfo says.
    void holds(int pid, const std::string& name, int descriptor, const std::string& node,
               const std::string& fdinfo) const {
        const std::string folder = "proc/" + std::to_string(pid) + "/";
        file(folder + "comm", name + "\n");
        link(folder + "fd/" + std::to_string(descriptor), "/dev/dri/" + node);
        file(folder + "fdinfo/" + std::to_string(descriptor), fdinfo);
    }

    std::filesystem::path root;
};

// Hears, through the kernel, of every file and directory opened below a folder.
class OpenWatch {
  public:
    explicit OpenWatch(const std::filesystem::path& folder) {
        watch(folder);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.is_directory() && !entry.is_symlink()) {
                watch(entry.path());
            }
        }
        opened();  // not the looking round above
    }
    ~OpenWatch() { close(descriptor); }
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;

    // What was opened since the last call: paths, a directory with "/" at its end.
    std::set<std::string> opened() {
        std::set<std::string> paths;
        alignas(inotify_event) char buffer[16384];
        for (pollfd ready{descriptor, POLLIN, 0}; poll(&ready, 1, 0) > 0;) {
            const ssize_t size = ::read(descriptor, buffer, sizeof buffer);
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                paths.insert(folders[event->wd] + "/" +
                             (event->len > 0 ? std::string(event->name) : "") +
                             ((event->mask & IN_ISDIR) != 0 ? "/" : ""));
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
        return paths;
    }

  private:
    void watch(const std::filesystem::path& folder) {
        folders[inotify_add_watch(descriptor, folder.c_str(), IN_OPEN)] =
            (folder / "").parent_path().string();  // without a slash at its end
    }

    int descriptor = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    std::map<int, std::string> folders;
};

}  // namespace vostel
