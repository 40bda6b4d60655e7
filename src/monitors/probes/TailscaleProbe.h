#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QObject>

#include "core/Background.h"
#include "monitors/probes/TailscaleStatus.h"

namespace vostel {

// Asks the Tailscale tool for the status of this machine.
class TailscaleProbe {
  public:
    // Runs a program and returns what it printed: path, arguments, time limit in seconds, most
    // bytes of output. Nothing when it cannot be run, fails or exceeds the limits.
    using Runner = std::function<std::optional<std::string>(
        const std::string&, const std::vector<std::string>&, double, std::size_t)>;
    using Completion = std::function<void(std::optional<TailscaleStatus>)>;

    // Where the tool may be, in order: the usual places, then the folders of `path`, a list
    // separated by colons as in $PATH. Folders that are not absolute are left out.
    static std::vector<std::string> places(const std::string& path);

    // `background` is borrowed and must outlive the probe; `runner` is called on its threads.
    TailscaleProbe(Background& background, Runner runner, std::vector<std::string> places);

    // Looks for the tool and asks it, at most 5 seconds long, off the main thread; then calls
    // `completion` on the main thread, unless `owner` is gone by then. Nothing when there is no
    // tool, it does not answer in time, or its answer is not understood.
    void fetch(QObject* owner, Completion completion);

  private:
    Background& background;
    Runner runner;
    std::vector<std::string> candidates;
};

}  // namespace vostel
