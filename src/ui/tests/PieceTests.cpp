#include <gtest/gtest.h>

#include <algorithm>

#include <QAbstractButton>
#include <QClipboard>
#include <QGuiApplication>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include "core/SystemColors.h"
#include "ui/BarMeter.h"
#include "ui/FigureText.h"
#include "ui/FooterButtons.h"
#include "ui/KeyValueRow.h"
#include "ui/NoteLine.h"
#include "ui/ProcessList.h"
#include "ui/Theme.h"
#include "ui/tests/StandInMonitor.h"

namespace vostel {
namespace {

ProcessEntry entry(const char* name, const char* value) {
    ProcessEntry result;
    result.name = QString::fromLatin1(name);
    result.values = {{QString::fromLatin1(value), QColor()}};
    return result;
}

int visibleRows(const ProcessList& list) {
    int count = 0;
    for (const ProcessRow* row : list.findChildren<ProcessRow*>()) {
        count += row->isVisibleTo(&list) ? 1 : 0;
    }
    return count;
}

// Catches text that cannot be read: WCAG 2.1 level AA wants 4.5.
TEST(Theme, everyTextColourHasEnoughContrast) {
    for (const Appearance appearance : {Appearance::Dark, Appearance::Light}) {
        Theme::set(appearance);
        const Theme& theme = Theme::current();
        const QColor texts[] = {
            theme.text,
            theme.secondary,
            theme.warning,
            theme.readable(QColor(0, 200, 83)),
            theme.readable(systemBlue()),
            theme.readable(Qt::black),
            theme.readable(Qt::white),
            theme.readable(QColor(255, 255, 0, 40)),
        };
        for (const QColor& color : texts) {
            EXPECT_GE(contrast(color, theme.window), 4.5) << qPrintable(color.name());
        }
        EXPECT_EQ(theme.readable(theme.text), theme.text) << "changed without need";
    }
    Theme::set(std::nullopt);
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.01);
}

// Catches values that wander as their digits change.
TEST(FigureText, everyDigitTakesTheSameRoom) {
    const QFont font;
    const double zeros = FigureText::width(font, QStringLiteral("000.0%"));
    for (const char16_t* text : {u"111.1%", u"747.4%", u"888.8%"}) {
        EXPECT_NEAR(FigureText::width(font, QString::fromUtf16(text)), zeros, 0.1);
    }
}

// Catches rows that are rebuilt or redrawn for nothing, and a list that shrinks under the pointer.
TEST(ProcessList, redrawsOnlyWhatChangedAndKeepsItsHeight) {
    ProcessList list(QStringLiteral("Sampling…"));
    list.resize(300, 400);
    EXPECT_EQ(visibleRows(list), 0);
    EXPECT_EQ(list.accessibleName(), QStringLiteral("Sampling…"));
    const int emptyHeight = list.sizeHint().height();

    EXPECT_EQ(list.setEntries({entry("a", "10%"), entry("b", "20%"), entry("c", "30%")}), 3);
    const int fullHeight = list.sizeHint().height();
    EXPECT_EQ(fullHeight, 3 * emptyHeight);
    EXPECT_EQ(list.setEntries({entry("a", "10%"), entry("b", "20%"), entry("c", "30%")}), 0);
    EXPECT_EQ(list.setEntries({entry("a", "10%"), entry("b", "25%"), entry("c", "30%")}), 1);
    EXPECT_EQ(visibleRows(list), 3);

    list.setEntries({entry("a", "10%")});
    EXPECT_EQ(visibleRows(list), 1);
    EXPECT_EQ(list.sizeHint().height(), fullHeight);
    list.setEntries({});
    EXPECT_EQ(visibleRows(list), 0);
    EXPECT_EQ(list.accessibleName(), QStringLiteral("Sampling…"));

    // A wider value moves the columns of all rows.
    EXPECT_EQ(list.setEntries({entry("a", "1"), entry("b", "2")}), 2);
    EXPECT_EQ(list.setEntries({entry("a", "1"), entry("b", "1234567%")}), 2);
    list.setEntries(std::vector<ProcessEntry>(50, entry("x", "1")));
    EXPECT_EQ(visibleRows(list), 10);
}

// Catches a copy button that copies something else, stays silent or is there without a value.
TEST(KeyValueRow, copiesItsValueAndSaysSo) {
    KeyValueRow row(QStringLiteral("WAN"));
    row.resize(300, row.sizeHint().height());
    row.setCopyable(QStringLiteral("address"));
    auto* button = row.findChild<QAbstractButton*>();
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isVisibleTo(&row));
    row.setValue(QStringLiteral("192.0.2.7"));
    EXPECT_TRUE(button->isVisibleTo(&row));
    EXPECT_EQ(button->accessibleName(), QStringLiteral("Copy address"));

    button->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("192.0.2.7"));
    EXPECT_EQ(button->accessibleName(), QStringLiteral("Copied"));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return button->accessibleName() == QStringLiteral("Copy address"); }, 10000));
}

TEST(NoteLine, takesNoRoomWithoutText) {
    QWidget parent;
    NoteLine note(&parent);
    EXPECT_TRUE(note.isHidden());
    note.setNote(QStringLiteral("x"), NoteLine::Kind::Warning);
    EXPECT_FALSE(note.isHidden());
    const int oneLine = note.heightForWidth(300);
    note.setNote(QString(200, u'x') + u' ' + QString(200, u'x'));
    EXPECT_GT(note.heightForWidth(300), oneLine);
    note.setNote(QString());
    EXPECT_TRUE(note.isHidden());
}

// Catches lost, squeezed and cut bars: each of 256 processors is to be seen, as wide as the others.
TEST(BarMeter, everyBarOfEveryRowIsWhole) {
    for (const int count : {1, 4, 5, 12, 32, 33, 64, 65, 96, 128, 192, 256, 511}) {
        for (const double scale : {1.0, 1.25, 2.0}) {
            BarMeter meter;
            meter.setColor(QColor(0, 255, 0));
            meter.setValues(std::vector<double>(static_cast<std::size_t>(count), 1.0));
            meter.resize(300, meter.sizeHint().height());
            QImage image((QSizeF(meter.size()) * scale).toSize(), QImage::Format_RGB32);
            image.setDevicePixelRatio(scale);
            image.fill(Qt::black);
            meter.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
            const auto isLit = [&](int x, int y) { return image.pixelColor(x, y).green() > 128; };
            std::vector<int> widths;  // of the bars, counted in the middle row of each row of them
            for (int y = 0, top = 0; y <= image.height(); ++y) {
                const int middle = image.width() / count / 2;  // of a bar, however many rows
                if (y < image.height() && isLit(middle, y)) {
                    continue;
                }
                for (int x = 0; y > top && x < image.width(); ++x) {
                    const int line = (top + y) / 2;
                    if (isLit(x, line) && (x == 0 || !isLit(x - 1, line))) {
                        widths.push_back(0);
                    }
                    if (isLit(x, line)) {
                        ++widths.back();
                    }
                }
                top = y + 1;
            }
            ASSERT_EQ(widths.size(), static_cast<std::size_t>(count)) << "at " << scale;
            EXPECT_EQ(std::ranges::count(widths, widths.front()), count)
                << count << " at " << scale << ": the last is " << widths.back() << " wide, not "
                << widths.front();
        }
    }
}

TEST(BarMeter, theLastOfThousandsIsSeen) {
    BarMeter meter;
    meter.setColor(QColor(0, 255, 0));
    std::vector<double> values(2048, 0.0);
    values.back() = 1;
    meter.setValues(values);
    meter.resize(300, meter.sizeHint().height());
    const QImage image = meter.grab().toImage();
    EXPECT_EQ(image.pixelColor(299, image.height() - 5), QColor(0, 255, 0));
}

// Catches an icon of 16 pixels drawn large in a picture at scale 2.
TEST(ProcessRow, drawsItsIconAtThePaintersScale) {
    QIcon icon;
    for (const auto& [size, color] : {std::pair(16, Qt::red), std::pair(32, Qt::green)}) {
        QPixmap pixmap(size, size);
        pixmap.fill(color);
        icon.addPixmap(pixmap);
    }
    ProcessRow row;
    row.setEntry({QStringLiteral("chromium"), icon, {}, {}});
    row.resize(200, 24);
    for (const auto& [scale, color] : {std::pair(1, Qt::red), std::pair(2, Qt::green)}) {
        QImage image(row.size() * scale, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        row.render(&image);
        EXPECT_EQ(image.pixelColor(8 * scale, 12 * scale), QColor(color)) << scale;
    }
}

// Catches a button that opens nothing, or one that is called by another system's name.
TEST(FooterButtons, nameTheMonitorThatIsInstalled) {
    FooterButtons footer;
    auto* button = footer.findChildren<QAbstractButton*>().value(0);
    ASSERT_NE(button, nullptr);
    {
        const StandInMonitor installed;
        footer.show();
        EXPECT_EQ(button->text(), QStringLiteral("Open in Task Manager"));
        EXPECT_TRUE(button->isEnabled());
        EXPECT_EQ(button->toolTip(), QString());
    }
    footer.hide();
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    footer.show();
    EXPECT_EQ(button->accessibleName(), QStringLiteral("Open in System Monitor"));
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(button->toolTip(), QStringLiteral("No system monitor is installed."));
    qputenv("PATH", path);
}

TEST(FooterButtons, areReachedAndPressedWithTheKeyboard) {
    const StandInMonitor installed;
    FooterButtons footer;
    QSignalSpy monitor(&footer, &FooterButtons::monitorRequested);
    QSignalSpy settings(&footer, &FooterButtons::settingsRequested);
    footer.show();
    const auto buttons = footer.findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 2);
    QTest::keyClick(buttons[0], Qt::Key_Space);
    QTest::keyClick(buttons[1], Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return settings.count() == 1; }, 5000));
    EXPECT_EQ(monitor.count(), 1);
    QTest::mouseClick(buttons[1], Qt::LeftButton);
    EXPECT_EQ(settings.count(), 2);
    EXPECT_FALSE(buttons[1]->hasFocus()) << "a click must not leave a focus ring";
}

}  // namespace
}  // namespace vostel
