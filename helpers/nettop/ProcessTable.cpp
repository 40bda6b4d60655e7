#include "ProcessTable.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <set>

namespace vostel::nettop {

namespace {

// A process may change its network namespace and its user while it runs: each is looked at again
// every so many listings.
constexpr std::uint64_t inspectEvery = 32;

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

Directory openDirectory(int root, const char* path) {
    const int opened = openat(root, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return Directory(opened < 0 ? nullptr : fdopendir(opened));
}

template <typename Number>
bool parseNumber(std::string_view text, Number& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size();
}

std::string_view linkText(int directory, const char* path, char (&buffer)[64]) {
    const ssize_t size = readlinkat(directory, path, buffer, sizeof buffer);
    return {buffer, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

}  // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return std::nullopt;
    }
    ProcessStat stat;
    stat.name = text.substr(open + 1, close - open - 1);
    text.remove_prefix(close + 1);
    for (int field = 3; field <= 22; ++field) {  // numbered as in proc(5)
        const std::size_t start = text.find_first_not_of(' ');
        if (start == std::string_view::npos) {
            return std::nullopt;
        }
        text.remove_prefix(start);
        const std::string_view word = text.substr(0, text.find_first_of(" \n"));
        text.remove_prefix(word.size());
        stat.ended = stat.ended || (field == 3 && (word == "Z" || word == "X"));
        if (field == 22 && !parseNumber(word, stat.startTime)) {
            return std::nullopt;
        }
    }
    return stat;
}

std::uint32_t parseSocketLink(std::string_view text) {
    std::uint32_t inode = 0;
    const bool fits = text.starts_with("socket:[") && text.ends_with("]") &&
                      parseNumber(text.substr(8, text.size() - 9), inode);
    return fits ? inode : 0;
}

ProcessTable::ProcessTable(const std::string& procRoot)
    : root(open(procRoot.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

std::optional<Holder> ProcessTable::identify(int pid) const {
    const std::string path = std::to_string(pid) + "/stat";
    const Descriptor file(openat(root.get(), path.c_str(), O_RDONLY | O_CLOEXEC));
    char buffer[1024];
    const ssize_t size = file ? read(file.get(), buffer, sizeof buffer) : -1;
    if (size <= 0) {
        return std::nullopt;
    }
    const auto stat = parseProcessStat({buffer, static_cast<std::size_t>(size)});
    if (!stat || stat->ended) {
        return std::nullopt;
    }
    return Holder{pid, stat->startTime, -1, stat->name};
}

std::optional<Holder> ProcessTable::remembered(int pid) const {
    const auto living = entries.find(pid);
    if (living != entries.end()) {
        return living->second.holder;
    }
    const auto gone = departed.find(pid);
    return gone == departed.end() ? std::nullopt : std::optional(gone->second);
}

ProcessTable::Entry ProcessTable::inspect(int pid) const {
    Entry entry;
    entry.holder = identify(pid).value_or(Holder{pid, 0, -1, ""});
    const std::string folder = std::to_string(pid);
    struct stat status{};
    if (fstatat(root.get(), folder.c_str(), &status, 0) == 0) {
        entry.uid = status.st_uid;
    }
    if (fstatat(root.get(), (folder + "/ns/net").c_str(), &status, 0) == 0) {
        entry.networkNamespace = status.st_ino;
    }
    // Threads of the kernel, which have no descriptors, have no program behind them.
    char target[64];
    entry.kernelThread =
        readlinkat(root.get(), (folder + "/exe").c_str(), target, 1) < 0 && errno == ENOENT;
    return entry;
}

std::vector<int> ProcessTable::refresh() {
    ++generation;
    const Directory listing = openDirectory(root.get(), ".");
    while (const dirent* item = listing ? readdir(listing.get()) : nullptr) {
        int pid = 0;
        if (!parseNumber(std::string_view(item->d_name), pid)) {
            continue;
        }
        const auto [entry, isNew] = entries.try_emplace(pid);
        const bool again = (generation + static_cast<std::uint64_t>(pid)) % inspectEvery == 0;
        if (isNew || (again && !entry->second.kernelThread)) {
            const bool searched = entry->second.searched;
            entry->second = inspect(pid);
            entry->second.searched = searched;
        }
        entry->second.generation = generation;
    }
    departed.clear();
    std::vector<int> gone;
    for (auto entry = entries.begin(); entry != entries.end();) {
        if (entry->second.generation == generation) {
            ++entry;
        } else {
            gone.push_back(entry->first);
            departed.emplace(entry->first, std::move(entry->second.holder));
            entry = entries.erase(entry);
        }
    }
    return gone;
}

std::vector<int> ProcessTable::order(const Wanted& wanted, const Known& known) const {
    std::set<std::uint32_t> users;
    for (const auto& [inode, uid] : wanted) {
        users.insert(uid);
    }
    std::vector<std::pair<int, int>> ranked;
    for (const auto& [pid, entry] : entries) {
        if (!entry.kernelThread) {
            const int rank = !entry.searched             ? 0
                             : known.contains(pid)       ? 1
                             : users.contains(entry.uid) ? 2
                                                         : 3;
            ranked.emplace_back(rank, pid);
        }
    }
    std::sort(ranked.begin(), ranked.end());
    std::vector<int> result;
    result.reserve(ranked.size());
    for (const auto& [rank, pid] : ranked) {
        result.push_back(pid);
    }
    return result;
}

void ProcessTable::searchOne(int pid, const std::unordered_set<int>* known, Wanted& wanted,
                             const Found& found) const {
    const Directory listing = openDirectory(root.get(), (std::to_string(pid) + "/fd").c_str());
    std::optional<Holder> holder;
    while (const dirent* item = listing && !wanted.empty() ? readdir(listing.get()) : nullptr) {
        int descriptor = 0;
        if (!parseNumber(std::string_view(item->d_name), descriptor) ||
            (known != nullptr && known->contains(descriptor))) {
            continue;
        }
        char buffer[64];
        const std::uint32_t inode =
            parseSocketLink(linkText(dirfd(listing.get()), item->d_name, buffer));
        if (inode == 0 || !wanted.contains(inode)) {
            continue;
        }
        if (!holder) {
            holder = identify(pid);
        }
        if (!holder) {
            return;
        }
        holder->descriptor = descriptor;
        wanted.erase(inode);
        found(inode, *holder);
    }
}

void ProcessTable::search(Wanted wanted, const Known& known, const Found& found) {
    for (const int pid : order(wanted, known)) {
        if (wanted.empty()) {
            return;
        }
        const auto descriptors = known.find(pid);
        searchOne(pid, descriptors == known.end() ? nullptr : &descriptors->second, wanted, found);
        entries.at(pid).searched = true;
    }
}

bool ProcessTable::stillHolds(const HeldSocket& socket) const {
    char path[48];
    std::snprintf(path, sizeof path, "%d/fd/%d", socket.pid, socket.descriptor);
    char buffer[64];
    return parseSocketLink(linkText(root.get(), path, buffer)) == socket.inode;
}

std::map<ino_t, int> ProcessTable::namespaces() const {
    std::map<ino_t, int> result;
    for (const auto& [pid, entry] : entries) {
        if (entry.networkNamespace != 0 && !entry.kernelThread) {
            result.emplace(entry.networkNamespace, pid);
        }
    }
    return result;
}

}  // namespace vostel::nettop
