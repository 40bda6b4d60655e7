#include "platform/LineOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>

namespace vostel {

namespace {

LineOutput outcomeOf(ssize_t written) {
    if (written >= 0) {
        return LineOutput::Written;
    }
    return errno == EPIPE ? LineOutput::Closed : LineOutput::Dropped;
}

// A pipe or a terminal through an opening of its own: that the descriptor itself does not wait
// would hold for every process that shares it. Where that is not allowed, as for the terminal of
// another user, what is ready for a byte is taken to be ready for a line.
LineOutput writeToReader(int descriptor, const std::string& text) {
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    const int own = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own < 0) {
        if (errno == ENXIO) {
            return LineOutput::Closed;  // a pipe without a reader (fifo(7))
        }
        pollfd ready{descriptor, POLLOUT, 0};
        return poll(&ready, 1, 0) == 1 ? outcomeOf(write(descriptor, text.data(), text.size()))
                                       : LineOutput::Dropped;
    }
    const LineOutput outcome = outcomeOf(write(own, text.data(), text.size()));
    close(own);
    return outcome;
}

}  // namespace

LineOutput writeLine(int descriptor, std::string_view line) {
    std::string text(line.substr(0, PIPE_BUF - 1));
    text += '\n';
    struct stat status{};
    if (fstat(descriptor, &status) != 0) {
        return LineOutput::Dropped;
    }
    if (S_ISSOCK(status.st_mode)) {
        return outcomeOf(send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
    }
    if (S_ISFIFO(status.st_mode) || isatty(descriptor) != 0) {
        return writeToReader(descriptor, text);
    }
    return outcomeOf(write(descriptor, text.data(), text.size()));
}

}  // namespace vostel
