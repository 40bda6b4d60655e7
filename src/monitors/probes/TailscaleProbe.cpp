#include "monitors/probes/TailscaleProbe.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace vostel {

namespace {

constexpr double timeLimit = 5.0;  // seconds
// The answer lists every peer with about 1.5 KB: room for a tailnet of 5000 machines.
constexpr std::size_t mostOutput = 8 << 20;

bool isExecutableFile(const std::string& path) {
    struct stat information{};
    return stat(path.c_str(), &information) == 0 && S_ISREG(information.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::vector<std::string> TailscaleProbe::places(const std::string& path) {
    std::vector<std::string> result = {
        "/usr/local/bin/tailscale",
        "/opt/homebrew/bin/tailscale",
        "/Applications/Tailscale.app/Contents/MacOS/Tailscale",
        "/usr/bin/tailscale",
    };
    std::string_view rest = path;
    while (!rest.empty()) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        const std::string_view folder = rest.substr(0, colon);
        rest.remove_prefix(std::min(colon + 1, rest.size()));
        std::string place = std::string(folder) + "/tailscale";
        if (folder.starts_with('/') &&
            std::find(result.begin(), result.end(), place) == result.end()) {
            result.push_back(std::move(place));
        }
    }
    return result;
}

TailscaleProbe::TailscaleProbe(Background& work, Runner run, std::vector<std::string> places)
    : background(work), runner(std::move(run)), candidates(std::move(places)) {}

void TailscaleProbe::fetch(QObject* owner, Completion completion) {
    background.run(
        owner,
        [run = runner, places = candidates]() -> std::optional<TailscaleStatus> {
            const auto tool = std::find_if(places.begin(), places.end(), isExecutableFile);
            if (tool == places.end()) {
                return std::nullopt;
            }
            const auto answer = run(*tool, {"status", "--json"}, timeLimit, mostOutput);
            return answer ? parseTailscaleStatus(*answer) : std::nullopt;
        },
        std::move(completion));
}

}  // namespace vostel
