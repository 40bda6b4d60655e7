#include <gtest/gtest.h>

#include <cmath>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QColorDialog>
#include <QLabel>
#include <QMessageBox>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include "core/ColorText.h"
#include "core/ModuleSettings.h"
#include "core/SystemColors.h"
#include "ui/settings/AppearanceOverrideSection.h"
#include "ui/settings/ChoiceRow.h"
#include "ui/settings/ColorSwatch.h"
#include "ui/settings/HexColorPicker.h"
#include "ui/settings/IntervalPicker.h"
#include "ui/settings/SettingsPanel.h"
#include "ui/settings/SliderRow.h"
#include "ui/settings/TextField.h"
#include "ui/settings/TextRow.h"
#include "ui/settings/ToggleRow.h"
#include "ui/settings/ToggleSwitch.h"

namespace vostel {
namespace {

class SettingsRowTest : public testing::Test {
  protected:
    // Shows the panel, as a window of its own, and follows the settings.
    void open() {
        panel.follow(center, {"mSettingsChanged", "globalSettingsChanged"});
        panel.resize(600, 700);
        panel.show();
        panel.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    }

    // The control of that name, which a click can reach.
    template <typename Control>
    Control* control(const char* name) {
        for (Control* each : panel.findChildren<Control*>()) {
            if (each->accessibleName() == QString::fromUtf8(name) && each->isVisible()) {
                return each;
            }
        }
        ADD_FAILURE() << "no control named " << name;
        std::abort();
    }
    void click(const char* name) {
        QTest::mouseClick(control<QAbstractButton>(name), Qt::LeftButton);
    }
    void type(const char* field, const char* text) {
        auto* edit = control<TextField>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, QLatin1String(text));
    }
    bool shows(const QString& text) {
        const auto labels = panel.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->isVisible() && label->text() == text;
        });
    }
    QString text(const char* key) {
        return store.values().text(QLatin1String(key)).value_or(QStringLiteral("absent"));
    }
    bool has(const char* key) { return store.values().contains(QLatin1String(key)); }

    QTemporaryDir folder;
    DefaultsStore store{folder.filePath(QStringLiteral("s.plist")), nullptr};
    NotificationCenter center;
    GlobalSettings global{store, center};
    ModuleSettings item{store, center, global, QStringLiteral("m."), "mSettingsChanged"};
    SettingsGroup group{store, center, QStringLiteral("m."), "mSettingsChanged"};
    Appearance bar = Appearance::Dark;
    const std::function<Appearance()> inBar = [this] { return bar; };
    SettingsPanel panel{QStringLiteral("Panel")};
};

// Catches rows that do not write, write another key, or do not post; and controls that a change
// from elsewhere does not reach.
TEST_F(SettingsRowTest, everyRowWritesItsKeyAndFollowsIt) {
    Setting<bool> flag(group, QStringLiteral("flag"), false);
    Setting<QString> mode(group, QStringLiteral("mode"), QStringLiteral("b"));
    Setting<double> seconds(group, QStringLiteral("seconds"), 1.0);
    panel.addRow(new ToggleRow(QStringLiteral("Flag"), bound(flag)));
    panel.addRow(new ChoiceRow(QStringLiteral("Mode"),
                               {{QStringLiteral("a"), QStringLiteral("First")},
                                {QStringLiteral("b"), QStringLiteral("Second")}},
                               bound(mode)));
    panel.addRow(new TextRow(QStringLiteral("Label (Optional)"), bound(item.label)));
    panel.addRow(new IntervalPicker(QStringLiteral("Every"), bound(seconds)));
    panel.addRow(new SliderRow(QStringLiteral("Label Size: "), {4, 9, 0.5},
                               {[this] { return global.labelSize(); },
                                [this](double size) { global.setLabelSize(size); }}));
    open();
    int posts = 0;
    const auto subscription = center.subscribe("mSettingsChanged", [&] { ++posts; });

    click("Flag");
    EXPECT_EQ(store.values().boolean(QStringLiteral("m.flag")), true);
    QTest::keyClick(control<ToggleSwitch>("Flag"), Qt::Key_Space);
    EXPECT_EQ(store.values().boolean(QStringLiteral("m.flag")), false);
    click("Mode: First");
    EXPECT_EQ(text("m.mode"), QStringLiteral("a"));
    // As a screen reader does; the toolkit's own action would only change the look.
    for (const char* name : {"Mode: Second", "Flag"}) {
        QAccessible::queryAccessibleInterface(control<QAbstractButton>(name))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::toggleAction());
    }
    EXPECT_EQ(text("m.mode"), QStringLiteral("b"));
    EXPECT_EQ(store.values().boolean(QStringLiteral("m.flag")), true);
    click("Flag");
    click("Mode: First");
    QTest::keyClick(control<QAbstractButton>("Mode: First"), Qt::Key_Right);
    EXPECT_EQ(text("m.mode"), QStringLiteral("b"));
    click("Every: ¼s");
    EXPECT_EQ(store.values().number(QStringLiteral("m.seconds")), 0.25);
    type("Label (Optional)", "ab");
    EXPECT_EQ(text("m.label"), QStringLiteral("ab"));
    EXPECT_EQ(posts, 11);  // two of them letters
    QTest::keyClick(control<QSlider>("Label Size"), Qt::Key_End);
    EXPECT_EQ(store.values().number(QStringLiteral("global.labelSize")), 9);
    EXPECT_TRUE(shows(QStringLiteral("Label Size: 9")));
    // A screen reader hears and sets the number, not the slider's position.
    QAccessibleValueInterface* spoken =
        QAccessible::queryAccessibleInterface(control<QSlider>("Label Size"))->valueInterface();
    EXPECT_EQ(spoken->maximumValue(), 9);
    spoken->setCurrentValue(4.6);
    EXPECT_EQ(spoken->currentValue(), 4.5);
    EXPECT_EQ(store.values().number(QStringLiteral("global.labelSize")), 4.5);
    EXPECT_EQ(posts, 11);

    flag = true;
    mode = QStringLiteral("a");
    item.label = QStringLiteral("other");
    seconds = 12.5;  // not offered
    QCoreApplication::processEvents();
    EXPECT_TRUE(control<ToggleSwitch>("Flag")->isChecked());
    EXPECT_TRUE(control<QAbstractButton>("Mode: First")->isChecked());
    EXPECT_EQ(control<TextField>("Label (Optional)")->text(), QStringLiteral("other"));
    EXPECT_TRUE(control<QAbstractButton>("Every: 12.5s")->isChecked());
    EXPECT_EQ(posts, 15);  // showing a value writes nothing
}

// Catches half-typed colours in the store, marks that stay, and a text that changes under the
// cursor.
TEST_F(SettingsRowTest, aTypedColorIsStoredOnlyWhenItIsOne) {
    panel.addRow(new HexColorPicker(
        QStringLiteral("Ink"), bound(global.textHex), [] { return QColor(Qt::red); },
        QStringLiteral("auto")));
    open();
    const char* name = "Ink, hexadecimal";
    auto* field = control<TextField>(name);
    EXPECT_EQ(field->text(), QStringLiteral("auto"));
    EXPECT_FALSE(field->hasComplaint());
    EXPECT_EQ(control<ColorSwatch>("Choose Ink")->color(), QColor(Qt::red));
    const struct {
        const char* typed;
        const char* stored;
        bool marked;
    } rows[] = {
        {"#12345", "absent", true},       {"nonsense", "absent", true},
        {"#123456", "#123456FF", false},  {"#1234567", "#123456FF", true},
        {"ab12cd80", "#AB12CD80", false}, {"", "#AB12CD80", true},
        {"auto", "auto", false},
    };
    for (const auto& row : rows) {
        type(name, row.typed);
        if (*row.typed == 0) {
            QTest::keyClick(field, Qt::Key_Backspace);
        }
        EXPECT_EQ(text("global.text"), QLatin1String(row.stored)) << row.typed;
        EXPECT_EQ(field->hasComplaint(), row.marked) << row.typed;
        EXPECT_EQ(field->text(), QLatin1String(row.typed));
    }
    type(name, "ab12cd");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(field->text(), QStringLiteral("#AB12CDFF"));
}

TEST_F(SettingsRowTest, theColorDialogShowsAtOnceAndCancelTakesItBack) {
    global.foregroundHex = QStringLiteral("#102030FF");
    panel.addRow(new HexColorPicker(QStringLiteral("Ink"), bound(global.foregroundHex),
                                    [] { return QColor(Qt::red); }));
    open();
    for (const bool accept : {false, true}) {
        click("Choose Ink");
        auto* dialog = panel.findChild<QColorDialog*>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_TRUE(dialog->testOption(QColorDialog::ShowAlphaChannel));
        dialog->setCurrentColor(QColor(1, 2, 3, 4));
        EXPECT_EQ(text("global.fg"), QStringLiteral("#01020304"));
        QTest::keyClick(dialog, accept ? Qt::Key_Return : Qt::Key_Escape);
        EXPECT_EQ(text("global.fg"),
                  accept ? QStringLiteral("#01020304") : QStringLiteral("#102030FF"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// Catches an override that is not set to the value in effect, is emptied instead of removed, or
// does not show what holds without it.
TEST_F(SettingsRowTest, overridesAreSetAndRemoved) {
    global.foregroundHex = QStringLiteral("#01020304");
    global.monochrome = true;
    global.updateInterval = 2.0;
    AppearanceOverrideSection{item, inBar}.addTo(panel);
    open();
    const struct {
        const char* title;
        const char* key;
        const char* global;
    } rows[] = {
        {"Foreground Color", "m.fg", "Global (#01020304)"},
        {"Background Color", "m.bg", "Global (#0000001A)"},
        {"Text Color", "m.text", "Global (auto)"},
        {"Monochrome", "m.mono", "Global (On)"},
        {"Refresh Interval", "m.interval", "Global (2s)"},
    };
    for (const auto& row : rows) {
        const std::string name = std::string("Override ") + row.title;
        EXPECT_TRUE(shows(QLatin1String(row.global))) << row.title;
        click(name.c_str());
        EXPECT_TRUE(has(row.key)) << row.title;
        EXPECT_FALSE(shows(QLatin1String(row.global))) << row.title;
        click(name.c_str());
        EXPECT_FALSE(has(row.key)) << row.title;
        EXPECT_TRUE(shows(QLatin1String(row.global))) << row.title;
    }
    EXPECT_EQ(item.effForeground(), QColor(1, 2, 3, 4));
    click("Override Foreground Color");
    EXPECT_EQ(text("m.fg"), QStringLiteral("#01020304"));
    click("Override Monochrome");
    click("Monochrome: Off");
    EXPECT_EQ(store.values().boolean(QStringLiteral("m.mono")), false);
    click("Override Refresh Interval");
    click("Refresh Interval: ½s");
    EXPECT_EQ(store.values().number(QStringLiteral("m.interval")), 0.5);
}

// Catches an override that begins with a colour of the settings window instead of the bar's, and
// swatches that show what was in effect when the page was made.
TEST_F(SettingsRowTest, overridesBeginWithWhatTheBarShows) {
    item.backgroundHexOverride = QStringLiteral("no colour");
    AppearanceOverrideSection{item, inBar}.addTo(panel);
    open();
    const auto swatch = [this](const char* title) {
        return control<ColorSwatch>((std::string("Choose ") + title).c_str())->color();
    };
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark}) {
        bar = appearance;
        click("Override Text Color");
        EXPECT_EQ(text("m.text"), hexString(labelColor(appearance)));
        click("Override Text Color");
        panel.hide();
        bar = appearance == Appearance::Light ? Appearance::Dark : Appearance::Light;
        panel.show();
        EXPECT_EQ(swatch("Text Color"), labelColor(bar));
    }
    global.backgroundHex = QStringLiteral("#01020304");
    EXPECT_EQ(swatch("Background Color"), QColor(1, 2, 3, 4));
    item.textHexOverride = QStringLiteral("no colour");
    global.textHex = QStringLiteral("#05060708");
    EXPECT_EQ(swatch("Text Color"), QColor(5, 6, 7, 8));
}

// Catches a slider that a number from a damaged file takes beyond its ends.
TEST_F(SettingsRowTest, aSliderStaysWithinItsRange) {
    const ThinSlider slider(QStringLiteral("s"), {16, 48, 1});
    for (const auto& [value, position] : std::initializer_list<std::pair<double, int>>{
             {1e300, 32}, {-1e300, 0}, {std::nan(""), 0}, {20, 4}}) {
        EXPECT_EQ(slider.positionOf(value), position) << value;
    }
}

TEST_F(SettingsRowTest, revertAsksFirst) {
    item.foregroundHexOverride = QStringLiteral("#FF0000FF");
    item.intervalOverride = 5.0;
    AppearanceOverrideSection{item, inBar}.addTo(panel);
    open();
    for (const char* answer : {"Cancel", "Revert"}) {
        click("Revert to Global Settings");
        auto* question = panel.findChild<QMessageBox*>();
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(
            question->text(),
            QStringLiteral(
                "Revert this item's appearance to the global settings? This can't be undone."));
        EXPECT_TRUE(has("m.fg")) << "before the answer";
        for (QAbstractButton* button : question->buttons()) {
            if (button->text().remove(u'&') == QLatin1String(answer)) {
                QTest::mouseClick(button, Qt::LeftButton);
            }
        }
        const bool reverted = *answer == 'R';
        EXPECT_EQ(has("m.fg"), !reverted);
        EXPECT_EQ(has("m.interval"), !reverted);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_TRUE(shows(QStringLiteral("Global (1s)")));
}

}  // namespace
}  // namespace vostel
