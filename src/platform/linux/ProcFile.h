#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// The whole of a small file, at most `limit` bytes; empty optional when it cannot be read.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t limit = 1 << 20);

// "cannot read /proc/stat: Permission denied", from errno.
std::string cannotRead(const std::string& path);

// A file under /proc that is read again and again: opened once, read from its start each time,
// into a buffer that is kept.
class ProcFile {
  public:
    explicit ProcFile(std::string path);
    ~ProcFile();
    ProcFile(const ProcFile&) = delete;
    ProcFile& operator=(const ProcFile&) = delete;

    // The content, at most 4 MiB of it, valid until the next call. Empty when it cannot be read;
    // the next call then tries to open it again.
    std::string_view read();

    // Why the last read() was empty, as in SourceHealth::failed(); empty when it was not.
    const std::string& error() const { return problem; }

  private:
    std::string_view fail();

    std::string path;
    std::string problem;
    int descriptor = -1;
    std::vector<char> buffer;
};

}  // namespace vostel
