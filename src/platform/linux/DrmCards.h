#pragma once

#include <map>
#include <string>
#include <vector>

namespace vostel {

struct DrmCard {
    std::string id;                       // name of its device: "0000:03:00.0", "fec00000.gpu"
    std::string driver;                   // "amdgpu"; empty when none is bound
    std::string path;                     // .../class/drm/card0
    std::vector<std::string> nodes;       // "card0", "renderD128"
    std::vector<std::string> connectors;  // "card0-eDP-1"
    bool pci = false;

    std::string device() const { return path + "/device"; }
};

// The graphics cards under sysRoot/class/drm, by number. Only that directory is listed and links
// are read: nothing of a card itself is opened. Cards without a device are left out. `problem`,
// when given, is emptied, or told why the directory cannot be read; one that is not there is no
// problem.
std::vector<DrmCard> listDrmCards(const std::string& sysRoot, std::string* problem = nullptr);

// Whether the device is powered down, or about to be, by its power/runtime_status; that file is
// answered by the kernel's own bookkeeping. A device without the file is awake.
bool isAsleep(const std::string& devicePath);

// Whether the device may be powered down when nobody asks it anything: runtime power management is
// on (power/control is "auto").
bool maySleep(const std::string& devicePath);

// Whether the card shows a picture on one of its connectors, which keeps it awake. Asks the
// kernel's bookkeeping alone.
bool drivesDisplay(const DrmCard& card, const std::string& sysRoot);

// Drops blanks and line ends at the end. Empty when the file cannot be read.
std::string readAttribute(const std::string& path);

// The number in an attribute; false when there is none.
bool readAttribute(const std::string& path, double& value);

}  // namespace vostel
