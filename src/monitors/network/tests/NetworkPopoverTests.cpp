#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QTemporaryDir>

#include "core/GlobalSettings.h"
#include "monitors/network/AddressButton.h"
#include "monitors/network/InterfaceRow.h"
#include "monitors/network/NetworkPopover.h"

namespace vostel {
namespace {

std::vector<InterfaceState> states(std::initializer_list<const char*> names) {
    std::vector<InterfaceState> result;
    for (const char* name : names) {
        InterfaceState state;
        state.id = state.displayName = name;
        state.lanIP = std::string("192.0.2.1");
        state.current = {1e11, 12};
        state.history.assign(60, state.current);
        result.push_back(state);
    }
    return result;
}

using Names = std::vector<std::string>;

TEST(InterfaceListTest, RowsStayInPlaceAndInactiveOnesLinger) {
    InterfaceList list;
    list.resize(300, 100);
    list.setStates(states({"a", "b", "c"}));
    const auto rows = list.findChildren<InterfaceRow*>();
    const int height = list.sizeHint().height();
    list.setStates(states({"a", "c"}));  // b fell silent
    EXPECT_EQ(list.shownNames(), (Names{"a", "b", "c"}));
    list.setStates(states({"a", "b", "c"}));
    list.setStates(states({"b", "c", "d"}));
    EXPECT_EQ(list.shownNames(), (Names{"a", "b", "c", "d"}));
    for (int i = 0; i < InterfaceList::keptUpdates; ++i) {
        list.setStates(states({"c"}));
    }
    EXPECT_EQ(list.shownNames(), (Names{"b", "c", "d"})) << "a was missing one update longer";
    list.setStates(states({"c"}));
    EXPECT_EQ(list.shownNames(), Names{"c"});
    list.setStates({});
    EXPECT_GE(list.sizeHint().height(), height) << "what is below would jump";
    EXPECT_EQ(list.findChildren<InterfaceRow*>().first(3), rows) << "rows are filled anew";
}

TEST(NetworkPopoverTest, ShowsWhatTheModelHolds) {
    QTemporaryDir folder;
    DefaultsStore defaults(folder.filePath(QStringLiteral("s.plist")), nullptr);
    NotificationCenter center;
    GlobalSettings global(defaults, center);
    NetworkSettings settings(defaults, center, global);
    NetworkViewModel model;
    NetworkPopover popover(model, settings, [] {});
    const auto named = [&](const QString& name) {
        const auto all = popover.findChildren<QWidget*>();
        return std::find_if(all.begin(), all.end(), [&](QWidget* widget) {
                   return widget->accessibleName() == name && !widget->isHidden();
               }) != all.end();
    };
    EXPECT_TRUE(named(QStringLiteral("WAN Not available")));
    EXPECT_FALSE(named(QStringLiteral("Tailscale")));
    const struct {
        TrafficState state;
        const char16_t* text;
    } rows[] = {
        {TrafficState::waiting, u"Sampling…"},
        {TrafficState::silent, u"Traffic helper not responding; trying again"},
        {TrafficState::ended, u"Traffic helper ended; trying again"},
        {TrafficState::missing, u"Traffic helper cannot be started"},
        {TrafficState::live, u"No active network traffic"},
    };
    for (const auto& row : rows) {
        model.trafficState = row.state;
        EXPECT_TRUE(named(QString::fromUtf16(row.text))) << static_cast<int>(row.state);
    }
    const int empty = popover.snapshot(1).height();

    model.looksUpWAN = false;
    EXPECT_TRUE(named(QStringLiteral("WAN Not looked up")));
    model.looksUpWAN = true;
    model.wanIP = QStringLiteral("203.0.113.9");
    EXPECT_TRUE(named(QStringLiteral("Copy WAN address")));
    model.sessionDown = 1536;
    EXPECT_TRUE(named(QStringLiteral("Session 1.5\u2009KB / 0.0\u2009B")));
    model.peakUp = 2048;
    EXPECT_TRUE(
        named(QStringLiteral("Download 0.0\u2009B/s, peak 0.0\u2009B/s; upload "
                             "0.0\u2009B/s, peak 2.0\u2009K/s")));
    TailscaleStatus status;
    status.dnsName = "host.example.ts.net";
    model.tailscale = status;  // known, but without an address
    EXPECT_TRUE(named(QStringLiteral("Tailscale")));
    EXPECT_TRUE(named(QStringLiteral("Name host.example.ts.net")));
    model.topApps = std::vector<AppUsage>{{7, QStringLiteral("curl"), {}, 1024, 0}};
    EXPECT_TRUE(named(QStringLiteral("curl, 1.0\u2009K/s, 0.0\u2009B/s")));
    model.interfaces = std::vector<InterfaceState>(30, states({"eth0"}).front());
    EXPECT_GT(popover.snapshot(1).height(), empty + 25 * 30);

    auto* address = popover.findChild<AddressButton*>();
    ASSERT_NE(address, nullptr);
    address->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("192.0.2.1"));
    EXPECT_EQ(address->accessibleName(), QStringLiteral("Copied"));
}

}  // namespace
}  // namespace vostel
