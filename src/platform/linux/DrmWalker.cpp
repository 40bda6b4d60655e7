#include "platform/linux/DrmWalker.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/ProcFile.h"

namespace vostel {

namespace {

constexpr std::size_t mostDescriptors = 4096;
constexpr std::size_t largestFdinfo = 1 << 14;
constexpr int looksWhenNew = 3;

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

Directory openDirectory(int at, const char* path) {
    const int descriptor = openat(at, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return nullptr;
    }
    DIR* directory = fdopendir(descriptor);
    if (directory == nullptr) {
        close(descriptor);
    }
    return Directory(directory);
}

// A directory entry that is a number, else -1.
int number(const char* name) {
    int value = -1;
    const char* last = name + std::strlen(name);
    const auto [end, error] = std::from_chars(name, last, value);
    return error == std::errc() && end == last ? value : -1;
}

}  // namespace

DrmWalker::DrmWalker(std::string procRoot) : proc(std::move(procRoot)) {}

// Spread by process id, so that each walk looks through a few.
bool DrmWalker::isDue(int pid, const Process& process, double now, bool someoneLooks) {
    const double pause = someoneLooks ? 4 + pid % 4 : 15 + pid % 16;  // seconds
    return process.looks < looksWhenNew || now - process.lookedAt >= pause;
}

void DrmWalker::look(int procDirectory, int pid, Process& process) const {
    process.held.clear();
    char path[64];
    std::snprintf(path, sizeof path, "%d/fd", pid);
    const Directory directory = openDirectory(procDirectory, path);
    if (directory == nullptr) {
        process.looks = looksWhenNew;  // another user's
        return;
    }
    constexpr std::string_view prefix = "/dev/dri/";
    while (const dirent* entry = readdir(directory.get())) {
        const int descriptor = number(entry->d_name);
        char target[64];
        const ssize_t size = descriptor < 0 ? -1
                                            : readlinkat(dirfd(directory.get()), entry->d_name,
                                                         target, sizeof target);
        if (size <= 0 || static_cast<std::size_t>(size) >= sizeof target) {
            continue;
        }
        const std::string_view link(target, static_cast<std::size_t>(size));
        if (link.starts_with(prefix)) {
            process.held.push_back({descriptor, std::string(link.substr(prefix.size()))});
        }
    }
    if (!process.held.empty()) {
        const auto name = readSmallFile(proc + "/" + std::to_string(pid) + "/comm", 256);
        process.name = name ? name->substr(0, name->find('\n')) : std::string();
        if (process.name.find_first_not_of(" \t\r\v\f") == std::string::npos) {
            process.name = "process " + std::to_string(pid);
        }
    }
}

bool DrmWalker::read(int pid, const Process& process, const Held& held, const std::string& card,
                     std::vector<DrmDescriptor>& into) const {
    const auto text = readSmallFile(
        proc + "/" + std::to_string(pid) + "/fdinfo/" + std::to_string(held.descriptor),
        largestFdinfo);
    auto info = text ? parseDrmFdinfo(*text) : std::nullopt;
    if (!info) {
        return false;
    }
    into.push_back({card, pid, process.name, std::move(*info)});
    return true;
}

std::vector<DrmDescriptor> DrmWalker::walk(double now, bool someoneLooks,
                                           const std::map<std::string, std::string>& nodes) {
    std::vector<DrmDescriptor> result;
    ++walks;
    const Directory directory = openDirectory(AT_FDCWD, proc.c_str());
    problem = directory == nullptr ? cannotRead(proc) : std::string();
    if (directory == nullptr) {
        return result;
    }
    while (const dirent* entry = readdir(directory.get())) {
        const int pid = number(entry->d_name);
        if (pid <= 0) {
            continue;
        }
        Process& process = processes[pid];
        process.walk = walks;
        if (isDue(pid, process, now, someoneLooks)) {
            ++process.looks;
            process.lookedAt = now;
            look(dirfd(directory.get()), pid, process);
        }
        for (const Held& held : process.held) {
            const auto card = nodes.find(held.node);
            if (card != nodes.end() && result.size() < mostDescriptors &&
                !read(pid, process, held, card->second, result)) {
                process.looks = 0;  // closed, or another process by now: look again
            }
        }
    }
    std::erase_if(processes, [this](const auto& entry) { return entry.second.walk != walks; });
    return result;
}

}  // namespace vostel
