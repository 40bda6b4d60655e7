#include "platform/linux/ProcFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace vostel {

namespace {

constexpr std::size_t largestFile = 4 << 20;

// pread until the end of the file or of the buffer; -1 on an error.
ssize_t readAll(int descriptor, char* data, std::size_t size) {
    std::size_t total = 0;
    while (total < size) {
        const ssize_t n = pread(descriptor, data + total, size - total, static_cast<off_t>(total));
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return -1;
        }
        if (n == 0) {
            break;
        }
        total += static_cast<std::size_t>(n);
    }
    return static_cast<ssize_t>(total);
}

}  // namespace

std::optional<std::string> readSmallFile(const std::string& path, std::size_t limit) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        return std::nullopt;
    }
    std::string text;
    char chunk[4096];
    while (text.size() < limit) {
        const ssize_t n = ::read(descriptor, chunk, std::min(sizeof chunk, limit - text.size()));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            close(descriptor);
            return std::nullopt;
        }
        if (n == 0) {
            break;
        }
        text.append(chunk, static_cast<std::size_t>(n));
    }
    close(descriptor);
    return text;
}

std::string cannotRead(const std::string& path) {
    return "cannot read " + path + ": " + std::generic_category().message(errno);
}

ProcFile::ProcFile(std::string filePath) : path(std::move(filePath)), buffer(16384) {}

ProcFile::~ProcFile() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

std::string_view ProcFile::fail() {
    problem = cannotRead(path);
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
    return {};
}

std::string_view ProcFile::read() {
    if (descriptor < 0) {
        descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) {
            return fail();
        }
    }
    for (;;) {
        const ssize_t n = readAll(descriptor, buffer.data(), buffer.size());
        if (n < 0) {
            return fail();
        }
        if (static_cast<std::size_t>(n) < buffer.size() || buffer.size() >= largestFile) {
            problem = n == 0 ? path + " is empty" : "";
            return {buffer.data(), static_cast<std::size_t>(n)};
        }
        buffer.resize(buffer.size() * 4);
    }
}

}  // namespace vostel
