#include <gtest/gtest.h>

#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "monitors/probes/TailscaleProbe.h"

namespace vostel {
namespace {

TEST(TailscaleStatusTest, Answers) {
    struct Row {
        const char* answer;
        const char* dnsName;
        std::optional<std::string> ipv4;
        const char* state;
        bool online;
    };
    const Row rows[] = {
        {R"({"BackendState":"Running","Self":{"DNSName":"box.tail1.ts.net.","Online":true,
             "TailscaleIPs":["fd7a:115c::1","100.64.0.9","100.64.0.10"]}})",
         "box.tail1.ts.net", "100.64.0.9", "Running", true},
        {R"({"BackendState":"Stopped","Self":{"DNSName":"box","TailscaleIPs":["fd7a::1"]}})", "box",
         std::nullopt, "Stopped", false},
        {R"({"BackendState":7,"Self":{"DNSName":["x"],"TailscaleIPs":{"a":1},"Online":"yes"}})", "",
         std::nullopt, "Unknown", false},
        {R"({"Self":{"DNSName":"a..","TailscaleIPs":[null,5,["1.2.3.4"],"10.0.0.1"]}})", "a.",
         "10.0.0.1", "Unknown", false},
        {R"({"Self":null})", "", std::nullopt, "Unknown", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.answer);
        const auto status = parseTailscaleStatus(row.answer);
        ASSERT_TRUE(status);
        EXPECT_EQ(status->dnsName, row.dnsName);
        EXPECT_EQ(status->ipv4, row.ipv4);
        EXPECT_EQ(status->backendState, row.state);
        EXPECT_EQ(status->online, row.online);
    }
    for (const char* answer : {"", "[]", "null", "{\"Self\":", "failed to connect to tailscaled"}) {
        EXPECT_FALSE(parseTailscaleStatus(answer)) << answer;
    }
    // Nesting that would overflow a recursive reader's stack, and a text of a megabyte.
    EXPECT_FALSE(parseTailscaleStatus("{\"Self\":" + std::string(1 << 20, '[')));
    const std::string longName(1 << 20, 'x');
    EXPECT_EQ(parseTailscaleStatus("{\"Self\":{\"DNSName\":\"" + longName + "\"}}")->dnsName.size(),
              255u);
}

TEST(TailscaleProbeTest, LooksInTheUsualPlacesFirstAndOnlyInAbsoluteFolders) {
    const auto places = TailscaleProbe::places("relative:/usr/bin::/opt/ts:.");
    const std::vector<std::string> expected = {
        "/usr/local/bin/tailscale", "/opt/homebrew/bin/tailscale",
        "/Applications/Tailscale.app/Contents/MacOS/Tailscale", "/usr/bin/tailscale",
        "/opt/ts/tailscale"};
    EXPECT_EQ(places, expected);
}

class TailscaleProbeFetchTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        // A folder, a file that is not executable, and at last the tool.
        for (const char* name : {"plain", "tool"}) {
            QFile file(folder.filePath(QString::fromLatin1(name)));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        ASSERT_TRUE(QFile::setPermissions(folder.filePath(QStringLiteral("tool")),
                                          QFile::ReadOwner | QFile::ExeOwner));
        ASSERT_TRUE(
            QFile::setPermissions(folder.filePath(QStringLiteral("plain")), QFile::ReadOwner));
    }
    std::string path(const char* name) const {
        return folder.filePath(QString::fromLatin1(name)).toStdString();
    }

    QTemporaryDir folder;
    Background background;
    QEventLoop loop;
};

TEST_F(TailscaleProbeFetchTest, AsksTheFirstThatCanBeRun) {
    std::string asked;
    TailscaleProbe probe(background,
                         [&](const std::string& tool, const std::vector<std::string>& arguments,
                             double limit, std::size_t) -> std::optional<std::string> {
                             asked = tool;
                             for (const std::string& argument : arguments) {
                                 asked += " " + argument;
                             }
                             EXPECT_EQ(limit, 5.0);
                             return R"({"BackendState":"Running"})";
                         },
                         {path("missing"), path("."), path("plain"), path("tool")});
    std::optional<TailscaleStatus> status;
    probe.fetch(&loop, [&](std::optional<TailscaleStatus> result) {
        status = std::move(result);
        loop.quit();
    });
    loop.exec();
    ASSERT_TRUE(status);
    EXPECT_EQ(status->backendState, "Running");
    EXPECT_EQ(asked, path("tool") + " status --json");
}

TEST_F(TailscaleProbeFetchTest, NoToolNoAnswerAndNoOwner) {
    int runs = 0;
    const auto silent = [&](auto&&...) -> std::optional<std::string> {
        ++runs;
        return std::nullopt;
    };
    int answers = 0;
    for (const char* tool : {"missing", "tool"}) {
        TailscaleProbe probe(background, silent, {path(tool)});
        probe.fetch(&loop, [&](const std::optional<TailscaleStatus>& result) {
            EXPECT_FALSE(result);
            ++answers;
            loop.quit();
        });
        loop.exec();
    }
    EXPECT_EQ(answers, 2);
    EXPECT_EQ(runs, 1);
    auto owner = std::make_unique<QObject>();
    TailscaleProbe probe(background, silent, {path("tool")});
    probe.fetch(owner.get(), [](const auto&) { FAIL() << "its owner is gone"; });
    owner.reset();
    probe.fetch(&loop, [&](const auto&) { QTimer::singleShot(50, &loop, &QEventLoop::quit); });
    loop.exec();
}

}  // namespace
}  // namespace vostel
