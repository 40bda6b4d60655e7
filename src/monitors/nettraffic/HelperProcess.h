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
    enum class End { stopped, ended, cannotStart };

    // Starts `program` with `arguments`, its standard output in a pipe, its input and errors
    // nowhere; hands the output to `take` in pieces as it comes. Returns when the program ends or
    // closes its output, or when `stop` is requested. In every case the program has been killed
    // and reaped by then. Exceptions of `take` are not expected.
    static End run(const std::string& program, const std::vector<std::string>& arguments,
                   const std::stop_token& stop, const std::function<void(std::string_view)>& take);

    // Waits for `seconds`, or less when `stop` is requested.
    static void pause(double seconds, const std::stop_token& stop);
};

}  // namespace vostel
