#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "monitors/network/InterfaceAddresses.h"
#include "monitors/network/InterfaceMode.h"
#include "monitors/network/InterfaceState.h"
#include "monitors/network/NetSample.h"

namespace vostel {

// What one tick brings to the selection. Everything is borrowed for the call.
struct SelectionInput {
    const std::map<std::string, NetSample>& samples;
    const std::set<std::string>& once;  // the interfaces that together see every byte once
    const std::map<std::string, InterfaceAddresses>& addresses;
    InterfaceMode mode = InterfaceMode::automatic;
    const std::set<std::string>& selected;  // what counts in `custom`
    // The address of this machine in its tailnet, when a status with one is known.
    std::optional<std::string> tailscaleIPv4;
};

// Keeps the histories of all interfaces and of their sum, and decides on every tick which
// interfaces are active and which count.
//
// Active is an interface that has an address or is passing traffic. Counted are: in `all` every
// interface; in `automatic` the active ones, each byte once; in `custom` the
// selected ones, active or not.
class InterfaceSelection {
  public:
    static constexpr std::size_t historyCap = 60;

    void update(const SelectionInput& input);

    // Sums over the counted interfaces, oldest first, at most historyCap.
    const std::vector<NetSample>& aggregate() const { return sums; }
    NetSample current() const { return sums.empty() ? NetSample() : sums.back(); }

    // The highest sums so far, each direction by itself, in bytes per second.
    double peakDown() const { return highestDown; }
    double peakUp() const { return highestUp; }

    // The active interfaces: those with an IPv4 address first, then by name.
    const std::vector<InterfaceState>& list() const { return states; }
    // Their names in the same order.
    const std::vector<std::string>& activeNames() const { return active; }

  private:
    void keepHistories(const std::map<std::string, NetSample>& samples);
    void findActive(const SelectionInput& input);
    std::set<std::string> countedNames(const SelectionInput& input) const;
    void addUp(const SelectionInput& input, const std::set<std::string>& counted);
    void describe(const SelectionInput& input, const std::set<std::string>& counted);

    std::map<std::string, std::vector<NetSample>> histories;
    std::vector<NetSample> sums;
    double highestDown = 0;
    double highestUp = 0;
    std::vector<std::string> active;
    std::vector<InterfaceState> states;
};

}  // namespace vostel
