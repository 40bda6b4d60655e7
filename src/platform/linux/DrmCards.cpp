#include "platform/linux/DrmCards.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string_view>

#include "platform/linux/ProcFile.h"

namespace vostel {

namespace {

constexpr std::size_t mostCards = 64;

// The last component of what a link points to.
std::string linkName(const std::string& path) {
    std::array<char, 512> target{};
    const ssize_t size = readlink(path.c_str(), target.data(), target.size());
    if (size <= 0 || static_cast<std::size_t>(size) >= target.size()) {
        return {};
    }
    const std::string_view link(target.data(), static_cast<std::size_t>(size));
    return std::string(link.substr(link.rfind('/') + 1));
}

// N of "card" + N, else -1: "card0-eDP-1" is a connector.
int numberAfter(std::string_view name, std::string_view prefix) {
    int number = -1;
    if (name.starts_with(prefix)) {
        const char* last = name.data() + name.size();
        const auto [end, error] = std::from_chars(name.data() + prefix.size(), last, number);
        if (error != std::errc() || end != last) {
            return -1;
        }
    }
    return number;
}

// "0000:03:00.0"
bool isPciAddress(std::string_view name) {
    return name.size() == 12 && name[4] == ':' && name[7] == ':' && name[10] == '.';
}

}  // namespace

std::vector<DrmCard> listDrmCards(const std::string& sysRoot, std::string* problem) {
    const std::string folder = sysRoot + "/class/drm";
    std::vector<std::string> names;
    if (problem != nullptr) {
        problem->clear();
    }
    if (DIR* directory = opendir(folder.c_str())) {
        while (const dirent* entry = readdir(directory)) {
            names.emplace_back(entry->d_name);
        }
        closedir(directory);
    } else if (problem != nullptr && errno != ENOENT) {
        *problem = cannotRead(folder);
    }
    std::ranges::sort(names, {}, [](const std::string& name) {
        return std::pair(numberAfter(name, "card"), std::string_view(name));
    });
    std::vector<DrmCard> cards;
    for (const std::string& name : names) {
        if (numberAfter(name, "card") < 0 || cards.size() >= mostCards) {
            continue;
        }
        DrmCard card;
        card.path = folder + "/" + name;
        card.id = linkName(card.device());
        card.driver = linkName(card.device() + "/driver");
        card.pci = isPciAddress(card.id);
        card.nodes.push_back(name);
        for (const std::string& other : names) {
            if (other.starts_with(name + "-")) {
                card.connectors.push_back(other);
            } else if (numberAfter(other, "renderD") >= 0 &&
                       linkName(folder + "/" + other + "/device") == card.id) {
                card.nodes.push_back(other);
            }
        }
        if (!card.id.empty()) {
            cards.push_back(std::move(card));
        }
    }
    return cards;
}

std::string readAttribute(const std::string& path) {
    std::string text = readSmallFile(path, 4096).value_or(std::string());
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    return text;
}

bool readAttribute(const std::string& path, double& value) {
    const std::string text = readAttribute(path);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        return false;
    }
    value = static_cast<double>(number);
    return true;
}

bool isAsleep(const std::string& devicePath) {
    const std::string status = readAttribute(devicePath + "/power/runtime_status");
    return status == "suspended" || status == "suspending";
}

bool maySleep(const std::string& devicePath) {
    return readAttribute(devicePath + "/power/control") == "auto";
}

bool drivesDisplay(const DrmCard& card, const std::string& sysRoot) {
    return std::ranges::any_of(card.connectors, [&](const std::string& connector) {
        const std::string path = sysRoot + "/class/drm/" + connector;
        return readAttribute(path + "/enabled") == "enabled" &&
               readAttribute(path + "/dpms") == "On";
    });
}

}  // namespace vostel
