#include <gtest/gtest.h>

#include "monitors/network/InterfaceSelection.h"

namespace vostel {
namespace {

using Strings = std::vector<std::string>;

// A laptop: Ethernet without an address or traffic, Wi-Fi with both, its VLAN, a tunnel of the
// tailnet, an interface with only a link-local address.
struct Laptop {
    std::map<std::string, NetSample> samples = {{"eth0", {}},
                                                {"wlan0", {300, 30}},
                                                {"wlan0.5", {100, 10}},
                                                {"tailscale0", {50, 5}},
                                                {"ap0", {}}};
    std::set<std::string> once = {"eth0", "wlan0", "ap0"};
    std::map<std::string, InterfaceAddresses> addresses = {
        {"wlan0", {"192.168.1.5", "2001:db8::5", "fe80::5"}},
        {"tailscale0", {"100.64.0.9", {}, {}}},
        {"ap0", {{}, {}, "fe80::6"}}};
    std::set<std::string> selected;

    SelectionInput input(InterfaceMode mode) const {
        return {samples, once, addresses, mode, selected, "100.64.0.9"};
    }
};

Strings included(const InterfaceSelection& selection) {
    Strings names;
    for (const InterfaceState& state : selection.list()) {
        if (state.included) {
            names.push_back(state.id);
        }
    }
    return names;
}

TEST(InterfaceSelectionTest, ModesSumWhatTheListCallsIncluded) {
    struct Row {
        InterfaceMode mode;
        std::set<std::string> selected;
        NetSample sum;
        Strings included;
    };
    const Row rows[] = {
        {InterfaceMode::automatic, {}, {300, 30}, {"wlan0", "ap0"}},
        {InterfaceMode::all, {}, {450, 45}, {"tailscale0", "wlan0", "ap0", "wlan0.5"}},
        {InterfaceMode::custom, {"tailscale0", "gone0"}, {50, 5}, {"tailscale0"}},
        {InterfaceMode::custom, {}, {0, 0}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(rawValue(row.mode));
        Laptop laptop;
        laptop.selected = row.selected;
        InterfaceSelection selection;
        selection.update(laptop.input(row.mode));
        EXPECT_EQ(selection.current(), row.sum);
        EXPECT_EQ(included(selection), row.included);
        // The list does not depend on the mode: IPv4 first, then by name; the idle eth0 is not in
        // it.
        EXPECT_EQ(selection.activeNames(), (Strings{"tailscale0", "wlan0", "ap0", "wlan0.5"}));
    }
}

TEST(InterfaceSelectionTest, RowsNameTheTailnetAndShowTheBestAddress) {
    Laptop laptop;
    InterfaceSelection selection;
    selection.update(laptop.input(InterfaceMode::automatic));
    EXPECT_EQ(selection.list().at(0).displayName, "Tailscale (tailscale0)");
    EXPECT_EQ(selection.list().at(1).displayName, "wlan0");
    EXPECT_EQ(selection.list().at(1).lanIP, "192.168.1.5");
    EXPECT_EQ(selection.list().at(2).lanIP, "fe80::6");
    EXPECT_EQ(selection.list().at(3).lanIP, std::nullopt);
    // A status without an address must not name the interfaces that have none either.
    SelectionInput unnamed = laptop.input(InterfaceMode::automatic);
    unnamed.tailscaleIPv4.reset();
    selection.update(unnamed);
    for (const InterfaceState& state : selection.list()) {
        EXPECT_EQ(state.displayName, state.id);
    }
}

TEST(InterfaceSelectionTest, HistoriesAreCappedForgottenAndPeaksStay) {
    Laptop laptop;
    InterfaceSelection selection;
    for (int i = 1; i <= 100; ++i) {
        laptop.samples["wlan0"] = {i * 1e9, 0};
        selection.update(laptop.input(InterfaceMode::automatic));
    }
    ASSERT_EQ(selection.aggregate().size(), 60u);
    EXPECT_EQ(selection.aggregate().front().down, 41e9);
    EXPECT_EQ(selection.list().at(1).history.size(), 60u);
    EXPECT_EQ(selection.list().at(1).history.back().down, 100e9);
    laptop.samples.erase("wlan0");
    selection.update(laptop.input(InterfaceMode::automatic));
    laptop.samples["wlan0"] = {7, 0};
    selection.update(laptop.input(InterfaceMode::automatic));
    EXPECT_EQ(selection.list().at(1).history.size(), 1u) << "of an interface that had gone";
    EXPECT_EQ(selection.aggregate().size(), 60u);
    EXPECT_EQ(selection.current().down, 7);
    EXPECT_EQ(selection.peakDown(), 100e9);
}

}  // namespace
}  // namespace vostel
