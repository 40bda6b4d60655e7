// Names that look like markup, wherever the program shows names that come from outside.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolTip>

#include "app/AppDelegate.h"
#include "app/ModuleTable.h"
#include "app/settings/SettingsWindow.h"
#include "app/tests/SteadyPlatform.h"
#include "item/ItemModule.h"
#include "statusbar/OffscreenBar.h"
#include "statusbar/PlainText.h"
#include "ui/settings/SettingsPanel.h"

namespace vostel {
namespace {

constexpr QChar wordJoiner = u'\u2060';

// The kernel's short names and the names of interfaces have at most 15 bytes.
const std::vector<std::string> names = {"<img src=/x>", "<b>x</b>", "a&b<i>", "a&lt;b",
                                        "<i>\x1b[1m\x01\n2"};

struct Processes : ProcessSource {
    bool read(std::vector<ProcessRecord>& records) override {
        records.clear();
        ++readings;
        for (std::size_t i = 0; i < names.size(); ++i) {
            ProcessRecord record;
            record.pid = static_cast<std::int32_t>(i) + 1;
            record.cpuSeconds = readings;
            record.residentBytes = 1 << 20;
            record.comm = names[i];
            records.push_back(record);
        }
        return true;
    }
    // As of another user's process: there is its short name only.
    std::optional<ProcessDetails> details(std::int32_t, double) override { return std::nullopt; }
    int readings = 0;
};

struct Cards : GPUSource {
    bool isSlow(const GPURequest&) override { return false; }
    GPUReading read(const GPURequest& request) override {
        GPUReading reading{request.now, request.detailed, {}};
        for (const std::string& name : names) {
            GPUAccelerator card;
            card.id = card.name = name;
            card.statistics = GPUStatistics{60, 40, 20, 2e9, 8e9};
            reading.accelerators.push_back(card);
        }
        return reading;
    }
};

struct Links : NetworkSource {
    explicit Links(const Clock& steady) : clock(steady) {}
    std::vector<InterfaceCounters> interfaces() override {
        std::vector<InterfaceCounters> links;
        for (const std::string& name : names) {
            InterfaceCounters link;
            link.name = name;
            link.index = static_cast<int>(links.size()) + 2;
            link.received = link.sent = static_cast<std::uint64_t>(clock.seconds()) * 1000;
            link.up = link.carrier = true;
            links.push_back(link);
        }
        return links;
    }
    std::vector<InterfaceAddress> addresses() override {
        std::vector<InterfaceAddress> list;
        for (std::size_t i = 0; i < names.size(); ++i) {
            list.push_back({static_cast<int>(i) + 2, false, names[i]});
        }
        return list;
    }
    const Clock& clock;
};

Platform hostilePlatform(FakeClock*& clock) {
    Platform platform = makeSteadyPlatform(clock);
    platform.processes = std::make_unique<Processes>();
    platform.gpu = {std::make_shared<Cards>()};
    platform.network = std::make_unique<Links>(*clock);
    return platform;
}

// What a person sees of a name: one line.
QString seen(const std::string& name) {
    QString text = QString::fromStdString(name);
    for (QChar& letter : text) {
        letter = letter < u' ' ? QChar(u' ') : letter;
    }
    return text.simplified();
}

QStringList textsOf(const QWidget& widget) {
    QStringList texts{widget.toolTip(), widget.accessibleName(), widget.windowTitle()};
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        texts << label->text();
    }
    if (const auto* menu = qobject_cast<const QMenu*>(&widget)) {
        for (const QAction* action : menu->actions()) {
            texts << action->text();
        }
    }
    return texts;
}

// No widget's text is markup for the toolkit. Returns all that can be read.
QStringList expectPlain(const QWidget& root) {
    QStringList all;
    QList<const QWidget*> widgets{&root};
    for (const QWidget* widget : root.findChildren<QWidget*>()) {
        widgets << widget;
    }
    for (const QWidget* widget : widgets) {
        const std::string who = widget->metaObject()->className();
        EXPECT_FALSE(Qt::mightBeRichText(widget->toolTip()))
            << who << ": " << widget->toolTip().toStdString();
        EXPECT_TRUE(widget->whatsThis().isEmpty()) << who;
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText)
                << who << ": " << label->text().toStdString();
        }
        for (QString text : textsOf(*widget)) {
            all << text.remove(wordJoiner);
        }
    }
    return all;
}

bool shows(const QStringList& texts, const QString& name) {
    return std::any_of(texts.begin(), texts.end(),
                       [&](const QString& text) { return text.simplified().contains(name); });
}

class PlainTextTest : public testing::Test {
  protected:
    PlainTextTest() {
        services.network.interfaceMode = InterfaceMode::custom;
        services.network.lookUpWAN = false;
        QStringList chosen;
        for (const std::string& name : names) {
            chosen << QString::fromStdString(name);
        }
        services.network.selectedInterfaces = chosen;
        services.network.label = chosen.front();
        services.cpu.label = chosen.front();
        delegate.moduleManager->loadEnabledModules();
        for (const QString& id : moduleIds()) {
            delegate.moduleManager->setEnabled(true, id);
        }
    }

    QTemporaryDir folder;
    FakeClock* clock = nullptr;
    AppServices services{hostilePlatform(clock), folder.filePath(QStringLiteral("s.plist"))};
    ItemOrder order{services.defaults, itemNames()};
    OffscreenBar bar{order};
    AppDelegate delegate{services, bar};
};

TEST_F(PlainTextTest, everyPopover) {
    const QByteArray path = qgetenv("PATH");
    QFile tool(folder.filePath(QStringLiteral("tailscale")));
    ASSERT_TRUE(tool.open(QIODevice::WriteOnly));
    tool.write(R"(#!/bin/sh
echo '{"BackendState":"<b>","Self":{"DNSName":"<img src=/y>","TailscaleIPs":["<i>7</i>"]}}'
)");
    tool.close();
    ASSERT_EQ(chmod(tool.fileName().toLocal8Bit().constData(), 0755), 0);
    qputenv("PATH", folder.path().toLocal8Bit() + ':' + path);
    delegate.moduleManager->setEnabled(false, QStringLiteral("network"));
    delegate.moduleManager->setEnabled(true, QStringLiteral("network"));
    for (const QString& id : moduleIds()) {
        auto* item = dynamic_cast<ItemModule*>(delegate.moduleManager->running(id));
        if (item == nullptr) {
            continue;  // the combined item opens the others'
        }
        QStringList wanted;
        for (const std::string& name : names) {
            wanted << seen(name);
        }
        if (id == QStringLiteral("network")) {
            wanted << QStringLiteral("<img src=/y>") << QStringLiteral("<i>7</i>");
        }
        item->detailPopoverWillShow();
        Popover* popover = item->detailPopover();
        popover->show();
        QStringList missing = wanted;
        for (const QDeadlineTimer deadline(20'000); !missing.isEmpty() && !deadline.hasExpired();) {
            clock->now += 2.5;
            item->tick();
            QTest::qWait(50);
            const QStringList texts = expectPlain(*popover);
            missing = wanted;
            missing.removeIf([&](const QString& name) { return shows(texts, name); });
        }
        EXPECT_TRUE(missing.isEmpty())
            << id.toStdString() << " does not show " << missing.join(u'|').toStdString();
        popover->close();
        item->detailPopoverDidClose();
    }
    qputenv("PATH", path);
}

TEST_F(PlainTextTest, everyPageAndMenu) {
    delegate.showSettings();
    SettingsWindow* window = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        window = window != nullptr ? window : qobject_cast<SettingsWindow*>(widget);
    }
    ASSERT_NE(window, nullptr);
    for (const QString& id : window->pageIds()) {
        window->select(id);
        expectPlain(*window);
        const QStringList texts = expectPlain(*window->panel(id));
        for (const std::string& name : names) {
            EXPECT_EQ(shows(texts, seen(name)), id == QStringLiteral("network"))
                << id.toStdString() << ": " << name;
        }
    }
    for (BarItem* item : bar.items()) {
        EXPECT_FALSE(Qt::mightBeRichText(PlainText::shown(item->title() + u'\n' + item->value())));
        StatusItemClick click;
        click.button = Qt::RightButton;
        Q_EMIT item->clicked(click);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        EXPECT_TRUE(shows(expectPlain(*menu), QStringLiteral("Settings…")));
        menu->close();
    }
}

// The rule by which the toolkit reads a text is looked up with the toolkit itself.
TEST(PlainTextRuleTest, TextsStayWhatTheyAre) {
    const char* const letters[] = {"<",  ">", "&", "lt;", "!doc", "?xml", "img src=/dev/zero",
                                   "\n", " ", "/", "b",   "=",    "\x01", "ä"};
    int looksRich = 0;
    for (const char* first : letters) {
        for (const char* second : letters) {
            for (const char* third : letters) {
                for (const char* fourth : letters) {
                    const QString text =
                        QString::fromUtf8(QByteArray(first) + second + third + fourth + ">");
                    const QString expected = QString(text).replace(u'\x01', u' ');
                    QString shown = PlainText::shown(text);
                    looksRich += Qt::mightBeRichText(text) ? 1 : 0;
                    EXPECT_FALSE(Qt::mightBeRichText(shown)) << text.toStdString();
                    if (!Qt::mightBeRichText(expected)) {
                        EXPECT_EQ(shown, expected);
                    }
                    EXPECT_EQ(shown.remove(wordJoiner), expected);
                }
            }
        }
    }
    EXPECT_GT(looksRich, 100);
    EXPECT_EQ(PlainText::inMenu(QStringLiteral("R&D\ta\nb")), QStringLiteral("R&&D a b"));
}

// A tool tip that was read as markup waited for ever for the other end of the pipe.
TEST(PlainTextRuleTest, AToolTipReadsNoFile) {
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    const QString name = QStringLiteral("<img src=\"%1\">").arg(pipe);
    PlainText::showToolTip({5, 5}, name);
    EXPECT_EQ(QToolTip::text().remove(wordJoiner), name);
    EXPECT_FALSE(Qt::mightBeRichText(QToolTip::text()));
    QLabel* label = PlainText::label(name);
    EXPECT_GT(label->sizeHint().width(), 50);
    delete label;
    QToolTip::hideText();
}

TEST(PlainTextRuleTest, Messages) {
    const QString name = QStringLiteral("<b>x</b>");
    const std::unique_ptr<QMessageBox> box(PlainText::messageBox(name, name, nullptr));
    const QStringList texts = expectPlain(*box);
    EXPECT_EQ(texts.count(name), 2);

    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("<b>x.plist")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    QFileDialog panel(nullptr, QString(), folder.path());
    panel.setOption(QFileDialog::DontUseNativeDialog);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    PlainText::keepMessagesPlain(panel);
    panel.selectFile(QStringLiteral("<b>x.plist"));
    bool asked = false;
    QTimer::singleShot(0, &panel, [&] {
        auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(question, nullptr);
        asked = shows(expectPlain(*question), QStringLiteral("<b>x.plist"));
        question->reject();
    });
    panel.open();
    static_cast<QDialog&>(panel).accept();
    EXPECT_TRUE(asked) << "the question about an existing file";
}

}  // namespace
}  // namespace vostel
