#include "Options.h"

#include <charconv>
#include <string_view>

namespace vostel::nettop {

namespace {

// A whole number within the bounds, or nothing.
std::optional<long long> number(std::string_view text, long long least, long long most) {
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < least || value > most) {
        return std::nullopt;
    }
    return value;
}

std::string takeValue(char option, std::string_view value, Options& options) {
    const std::string quoted = "'" + std::string(value.substr(0, 40)) + "'";
    if (option == 'J') {
        return value == "bytes_in,bytes_out" ? "" : "-J takes bytes_in,bytes_out, not " + quoted;
    }
    const auto parsed = option == 's' ? number(value, 1, 3600) : number(value, 0, 1'000'000'000);
    if (!parsed) {
        return option == 's' ? "-s takes seconds from 1 to 3600, not " + quoted
                             : "-l takes a count, 0 for no end, not " + quoted;
    }
    if (option == 's') {
        options.interval = static_cast<int>(*parsed);
    } else {
        options.blocks = *parsed;
    }
    return "";
}

}  // namespace

ParsedOptions parseOptions(std::span<char* const> arguments) {
    ParsedOptions parsed;
    for (std::size_t index = 0; index < arguments.size() && parsed.error.empty(); ++index) {
        const std::string_view argument = arguments[index];
        if (argument == "--help" || argument == "--version") {
            (argument == "--help" ? parsed.options.help : parsed.options.version) = true;
        } else if (argument == "-J" || argument == "-l" || argument == "-s") {
            if (++index == arguments.size()) {
                parsed.error = std::string(argument) + " needs a value";
            } else {
                parsed.error = takeValue(argument[1], arguments[index], parsed.options);
            }
        } else if (argument != "-P" && argument != "-x") {
            parsed.error = "unknown option '" + std::string(argument.substr(0, 40)) + "'";
        }
    }
    return parsed;
}

std::string helpText() {
    return "Usage: vostel-nettop [-P] [-x] [-J bytes_in,bytes_out] [-l COUNT] [-s SECONDS]\n"
           "Prints each process's TCP byte counters as a block of lines, again and again.\n"
           "\n"
           "  -P                     one row per process (always so)\n"
           "  -x                     plain numbers (always so)\n"
           "  -J bytes_in,bytes_out  the columns\n"
           "  -l COUNT               end after COUNT blocks; 0, as without it: never\n"
           "  -s SECONDS             seconds between blocks, 1 to 3600; 1 without it\n"
           "  --help, --version      say this, or the version, and end\n"
           "\n"
           "Connections that stay on this machine are left out, and UDP is not counted.\n";
}

}  // namespace vostel::nettop
