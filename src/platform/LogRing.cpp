#include "platform/LogRing.h"

#include <unistd.h>

#include <deque>
#include <mutex>

#include "platform/LineOutput.h"

namespace vostel {

namespace {

constexpr std::size_t mostLines = 40;
constexpr std::size_t longestLine = 400;

struct Ring {
    std::mutex mutex;
    std::deque<std::string> lines;
};

Ring& ring() {
    static Ring instance;
    return instance;
}

}  // namespace

void writeLogLine(const std::string& line) {
    writeLine(STDERR_FILENO, "[Vostel] " + line);
    const std::lock_guard lock(ring().mutex);
    ring().lines.push_back(line.substr(0, longestLine));
    if (ring().lines.size() > mostLines) {
        ring().lines.pop_front();
    }
}

std::vector<std::string> recentLogLines() {
    const std::lock_guard lock(ring().mutex);
    return {ring().lines.begin(), ring().lines.end()};
}

}  // namespace vostel
