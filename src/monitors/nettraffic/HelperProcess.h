#pragma once

#include <sys/types.h>

#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// Runs a helper program and reads what it prints, on the calling thread.
class HelperProcess {
  public:
    enum class End { stopped, ended, silent, cannotStart };

    struct Command {
        std::string program;
        std::vector<std::string> arguments;
        double patience = 10;  // seconds, without the time that the machine is suspended
    };

    // Starts the program, its standard output in a pipe, its input and errors nowhere; hands the
    // output to `take` in pieces as it comes. Returns when the program ends or closes its output,
    // when `stop` is requested, or when for `patience` seconds no call of `take` returned true,
    // which means that something whole had come. In every case the program has been killed and
    // reaped by then. Exceptions of `take` are not expected.
    static End run(const Command& command, const std::stop_token& stop,
                   const std::function<bool(std::string_view)>& take);

    // Waits for `seconds` (not at all when negative), or less when `stop` is requested.
    static void pause(double seconds, const std::stop_token& stop);
};

}  // namespace vostel
