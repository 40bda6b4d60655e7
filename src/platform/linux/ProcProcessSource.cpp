#include "platform/linux/ProcProcessSource.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "platform/linux/ProcFile.h"

namespace vostel {

namespace {

constexpr std::size_t statBytes = 2048;       // 52 numbers of at most 20 digits and a name of 64
constexpr std::size_t argumentBytes = 65536;  // a class path may be long
constexpr std::size_t cgroupBytes = 4096;
constexpr std::uint64_t kernelThreadFlag = 0x00200000;  // PF_KTHREAD

class Descriptor {
  public:
    Descriptor(int directory, const char* path, int flags = 0)
        : value(openat(directory, path, O_RDONLY | O_CLOEXEC | O_NOCTTY | flags)) {}
    ~Descriptor() {
        if (value >= 0) {
            close(value);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return value; }

  private:
    int value;
};

// The file's first bytes; /proc gives a whole small file in one read.
std::string_view readOnce(int directory, const char* path, char* buffer, std::size_t size) {
    const Descriptor file(directory, path);
    ssize_t n = -1;
    if (file.get() >= 0) {
        do {
            n = ::read(file.get(), buffer, size);
        } while (n < 0 && errno == EINTR);
    }
    return {buffer, n > 0 ? static_cast<std::size_t>(n) : 0};
}

std::string readUpTo(int directory, const char* path, std::size_t limit) {
    std::string text;
    const Descriptor file(directory, path);
    char chunk[4096];
    while (file.get() >= 0 && text.size() < limit) {
        const ssize_t n = ::read(file.get(), chunk, std::min(sizeof chunk, limit - text.size()));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            break;
        }
        text.append(chunk, static_cast<std::size_t>(n));
    }
    return text;
}

// The decimal number at `cursor`, which moves behind it and the blank after it.
bool takeNumber(const char*& cursor, const char* end, std::uint64_t& value) {
    const auto [next, error] = std::from_chars(cursor, end, value);
    if (error != std::errc()) {
        return false;
    }
    cursor = next < end ? next + 1 : next;
    return true;
}

const char* skipFields(const char* cursor, const char* end, int count) {
    for (; count > 0 && cursor < end; --count) {
        const void* blank = std::memchr(cursor, ' ', static_cast<std::size_t>(end - cursor));
        cursor = blank != nullptr ? static_cast<const char*>(blank) + 1 : end;
    }
    return cursor;
}

std::string readLink(int directory, const char* path) {
    char target[4096];
    const ssize_t length = readlinkat(directory, path, target, sizeof target);
    return {target, length > 0 ? static_cast<std::size_t>(length) : 0};
}

std::vector<std::string> splitArguments(std::string_view text) {
    if (text.size() >= argumentBytes) {
        text = text.substr(0, text.rfind('\0') + 1);  // the last argument was cut
    }
    std::vector<std::string> arguments;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\0'), text.size());
        arguments.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    // A process that wrote a title over its arguments leaves NULs behind it.
    while (!arguments.empty() && arguments.back().empty()) {
        arguments.pop_back();
    }
    return arguments;
}

}  // namespace

bool parsePidStat(std::string_view text, const ProcUnits& units, ProcessRecord& record) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const std::size_t open = text.find('(');
    const std::size_t shut = text.rfind(')');
    const auto [after, error] = std::from_chars(begin, end, record.pid);
    if (error != std::errc() || record.pid <= 0 || shut == std::string_view::npos || open > shut) {
        return false;
    }
    record.comm.assign(begin + open + 1, begin + shut);
    // Numbers as in proc(5): 3 state, 9 flags, 14 utime, 15 stime, 22 starttime, 24 rss.
    const char* cursor = skipFields(begin + shut, end, 7);
    std::uint64_t flags = 0;
    std::uint64_t user = 0;
    std::uint64_t system = 0;
    std::uint64_t start = 0;
    std::uint64_t pages = 0;
    if (!takeNumber(cursor, end, flags)) {
        return false;
    }
    cursor = skipFields(cursor, end, 4);
    if (!takeNumber(cursor, end, user) || !takeNumber(cursor, end, system)) {
        return false;
    }
    cursor = skipFields(cursor, end, 6);
    if (!takeNumber(cursor, end, start)) {
        return false;
    }
    cursor = skipFields(cursor, end, 1);
    if (!takeNumber(cursor, end, pages)) {
        return false;
    }
    record.kernelThread = (flags & kernelThreadFlag) != 0;
    record.cpuSeconds =
        (static_cast<double>(user) + static_cast<double>(system)) / units.ticksPerSecond;
    record.startSeconds = static_cast<double>(start) / units.ticksPerSecond;
    record.residentBytes = pages * units.pageBytes;
    return true;
}

std::string_view cgroupPath(std::string_view text) {
    std::string_view systemd;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string_view::npos || second == std::string_view::npos) {
            continue;
        }
        const std::string_view controllers = line.substr(first + 1, second - first - 1);
        if (controllers.empty() && line.substr(0, first) == "0") {
            const std::string_view path = line.substr(second + 1);
            if (path != "/" || systemd.empty()) {
                systemd = path;
            }
        } else if (controllers == "name=systemd" && (systemd.empty() || systemd == "/")) {
            systemd = line.substr(second + 1);
        }
    }
    return systemd;
}

std::string_view appImageOf(std::string_view path, std::string_view mounts) {
    const std::size_t mount = path.find("/.mount_");
    const std::size_t below = path.find('/', mount + 1);
    if (mount == std::string_view::npos || below == std::string_view::npos) {
        return {};
    }
    const std::string field = ' ' + std::string(path.substr(0, below)) + ' ';
    while (!mounts.empty()) {
        const std::size_t end = std::min(mounts.find('\n'), mounts.size());
        const std::string_view line = mounts.substr(0, end);
        mounts.remove_prefix(std::min(end + 1, mounts.size()));
        // "... / /tmp/.mount_KritaAb1Cd2 ro ... - fuse.Krita.AppImage Krita.AppImage ro,..."
        constexpr std::string_view type = " - fuse.";
        const std::size_t at = line.find(type);
        if (line.find(field) < at && at != std::string_view::npos) {
            const std::string_view rest = line.substr(at + type.size());
            const std::string_view source = rest.substr(std::min(rest.find(' '), rest.size()));
            const std::string_view file = source.substr(0, source.find(' ', 1));
            if (file.size() < 2) {
                return {};
            }
            return file.substr(file.find_last_of(" /") + 1);
        }
    }
    return {};
}

ProcProcessSource::ProcProcessSource(const SystemRoots& roots) : proc(roots.proc) {
    if (const long ticks = sysconf(_SC_CLK_TCK); ticks > 0) {
        units.ticksPerSecond = static_cast<double>(ticks);
    }
    if (const long page = sysconf(_SC_PAGESIZE); page > 0) {
        units.pageBytes = static_cast<std::uint64_t>(page);
    }
}

ProcProcessSource::~ProcProcessSource() {
    if (root != nullptr) {
        closedir(root);
    }
}

bool ProcProcessSource::openRoot() {
    if (root == nullptr) {
        root = opendir(proc.c_str());
    }
    return root != nullptr;
}

bool ProcProcessSource::read(std::vector<ProcessRecord>& records) {
    if (!openRoot()) {
        health.failed(cannotRead(proc));
        records.clear();
        return false;
    }
    rewinddir(root);
    const int directory = dirfd(root);
    std::size_t count = 0;
    bool sorted = true;
    char buffer[statBytes];
    char path[32];
    while (const dirent* entry = readdir(root)) {
        const std::size_t length = std::strlen(entry->d_name);
        if (entry->d_name[0] < '1' || entry->d_name[0] > '9' || length > 10) {
            continue;
        }
        std::memcpy(path, entry->d_name, length);
        std::memcpy(path + length, "/stat", sizeof "/stat");
        if (count == records.size()) {
            records.emplace_back();
        }
        // A process may end between the listing and the reading.
        if (parsePidStat(readOnce(directory, path, buffer, sizeof buffer), units, records[count])) {
            sorted = sorted && (count == 0 || records[count - 1].pid < records[count].pid);
            ++count;
        }
    }
    records.resize(count);
    if (!sorted) {
        std::sort(records.begin(), records.end(),
                  [](const ProcessRecord& a, const ProcessRecord& b) { return a.pid < b.pid; });
    }
    if (count > 0) {
        health.succeeded();
    } else {
        health.failed(proc + " shows no processes");
    }
    return count > 0;
}

std::optional<ProcessDetails> ProcProcessSource::details(std::int32_t pid, double startSeconds) {
    // The descriptor stands for this very process: once it has ended, every file below it is gone,
    // even when the pid has a new owner. Not reached through `root`, which is read()'s.
    const std::string folder = proc + '/' + std::to_string(pid);
    const Descriptor process(AT_FDCWD, folder.c_str(), O_DIRECTORY);
    char buffer[statBytes];
    ProcessRecord record;
    if (process.get() < 0 ||
        !parsePidStat(readOnce(process.get(), "stat", buffer, sizeof buffer), units, record) ||
        (startSeconds >= 0 && record.startSeconds != startSeconds)) {
        return std::nullopt;
    }
    ProcessDetails details;
    details.arguments = splitArguments(readUpTo(process.get(), "cmdline", argumentBytes));
    details.executable = readLink(process.get(), "exe");
    details.folder = readLink(process.get(), "cwd");
    if (details.executable.find("/.mount_") != std::string::npos) {
        // The mount table of this process: that of another may not be readable.
        details.image =
            appImageOf(details.executable, readSmallFile(proc + "/self/mountinfo").value_or(""));
    }
    details.cgroup = cgroupPath(readUpTo(process.get(), "cgroup", cgroupBytes));
    return details;
}

}  // namespace vostel
