#include "monitors/network/InterfaceSelection.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vostel {

namespace {

void append(std::vector<NetSample>& history, NetSample sample) {
    if (history.size() >= InterfaceSelection::historyCap) {
        history.erase(history.begin());
    }
    history.push_back(sample);
}

const InterfaceAddresses* addressesOf(const SelectionInput& input, const std::string& name) {
    const auto found = input.addresses.find(name);
    return found != input.addresses.end() ? &found->second : nullptr;
}

bool hasIPv4(const SelectionInput& input, const std::string& name) {
    const InterfaceAddresses* addresses = addressesOf(input, name);
    return addresses != nullptr && addresses->ipv4;
}

}  // namespace

void InterfaceSelection::update(const SelectionInput& input) {
    keepHistories(input.samples);
    findActive(input);
    const std::set<std::string> counted = countedNames(input);
    addUp(input, counted);
    describe(input, counted);
}

void InterfaceSelection::keepHistories(const std::map<std::string, NetSample>& samples) {
    std::erase_if(histories, [&](const auto& entry) { return !samples.contains(entry.first); });
    for (const auto& [name, sample] : samples) {
        append(histories[name], sample);
    }
}

void InterfaceSelection::findActive(const SelectionInput& input) {
    active.clear();
    for (const auto& [name, sample] : input.samples) {
        const InterfaceAddresses* addresses = addressesOf(input, name);
        if ((addresses != nullptr && addresses->best()) || sample.down + sample.up > 0) {
            active.push_back(name);  // in ascending order, as the map is
        }
    }
    std::stable_partition(active.begin(), active.end(),
                          [&](const std::string& name) { return hasIPv4(input, name); });
}

std::set<std::string> InterfaceSelection::countedNames(const SelectionInput& input) const {
    std::set<std::string> names;
    switch (input.mode) {
        case InterfaceMode::custom:
            return input.selected;
        case InterfaceMode::all:
            for (const auto& [name, sample] : input.samples) {
                names.insert(name);
            }
            return names;
        case InterfaceMode::automatic:
            break;
    }
    std::copy_if(active.begin(), active.end(), std::inserter(names, names.end()),
                 [&](const std::string& name) { return input.once.contains(name); });
    return names;
}

void InterfaceSelection::addUp(const SelectionInput& input, const std::set<std::string>& counted) {
    NetSample sum;
    for (const auto& [name, sample] : input.samples) {
        if (counted.contains(name)) {
            sum.down += sample.down;
            sum.up += sample.up;
        }
    }
    append(sums, sum);
    highestDown = std::max(highestDown, sum.down);
    highestUp = std::max(highestUp, sum.up);
}

void InterfaceSelection::describe(const SelectionInput& input,
                                  const std::set<std::string>& counted) {
    states.clear();
    for (const std::string& name : active) {
        InterfaceState state;
        state.id = name;
        state.displayName = name;
        state.current = input.samples.at(name);
        state.history = histories[name];
        if (const InterfaceAddresses* addresses = addressesOf(input, name)) {
            state.lanIP = addresses->best();
        }
        if (input.tailscaleIPv4 && state.lanIP == input.tailscaleIPv4) {
            state.displayName = "Tailscale (" + name + ")";
        }
        state.included = counted.contains(name);
        states.push_back(std::move(state));
    }
}

}  // namespace vostel
