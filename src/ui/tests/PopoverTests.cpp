#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QGuiApplication>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "ui/FooterButtons.h"
#include "ui/KeyValueRow.h"
#include "ui/NoteLine.h"
#include "ui/Popover.h"
#include "ui/PopoverPlacement.h"
#include "ui/tests/StandInMonitor.h"

namespace vostel {
namespace {

// Catches popovers that leave the screen, cover their item or open towards the bar's edge.
TEST(PopoverPlacement, staysOnTheScreenBesideItsItem) {
    struct Row {
        const char* name;
        QRect anchor;
        QRect screen;
        QRect available;
        QSize size;
        std::optional<Qt::Edge> edge;
        Qt::Edge expectedEdge;
    };
    const QRect screen(0, 0, 1280, 800);
    const QRect second(1280, 100, 1920, 1080);
    const QRect underTop(0, 24, 1280, 776);
    const QRect overBottom(0, 0, 1280, 776);
    const QSize size(328, 400);
    const Row rows[] = {
        {"top", {600, 0, 40, 24}, screen, underTop, size, {}, Qt::TopEdge},
        {"top left", {0, 0, 20, 24}, screen, underTop, size, {}, Qt::TopEdge},
        {"top right", {1260, 0, 20, 24}, screen, underTop, size, {}, Qt::TopEdge},
        {"bottom", {600, 776, 40, 24}, screen, overBottom, size, {}, Qt::BottomEdge},
        {"bottom right", {1250, 776, 30, 24}, screen, overBottom, size, {}, Qt::BottomEdge},
        {"left bar", {0, 300, 24, 40}, screen, {24, 0, 1256, 800}, size, {}, Qt::LeftEdge},
        {"left bar, top item",
         {0, 0, 24, 40},
         screen,
         {24, 0, 1256, 800},
         size,
         Qt::LeftEdge,
         Qt::LeftEdge},
        {"right bar",
         {1256, 790, 24, 10},
         screen,
         {0, 0, 1256, 800},
         size,
         Qt::RightEdge,
         Qt::RightEdge},
        {"second screen",
         {3170, 100, 30, 24},
         second,
         {1280, 124, 1920, 1056},
         size,
         {},
         Qt::TopEdge},
        {"too high", {600, 0, 40, 24}, screen, underTop, {328, 3000}, {}, Qt::TopEdge},
        {"too high, bottom",
         {600, 776, 40, 24},
         screen,
         overBottom,
         {328, 3000},
         {},
         Qt::BottomEdge},
        {"tiny screen",
         {10, 0, 20, 24},
         {0, 0, 320, 240},
         {0, 24, 320, 216},
         size,
         {},
         Qt::TopEdge},
    };
    for (const Row& row : rows) {
        const PopoverPlacement placed =
            PopoverPlacement::at(row.anchor, row.size, row.screen, row.available, row.edge);
        EXPECT_EQ(placed.edge, row.expectedEdge) << row.name;
        EXPECT_TRUE(row.available.contains(placed.rect)) << row.name;
        EXPECT_FALSE(row.anchor.intersects(placed.rect)) << row.name;
        EXPECT_GE(placed.rect.height(), std::min(row.size.height(), row.available.height() / 2))
            << row.name;
    }
}

struct Opened {
    StandInMonitor installed;
    Popover popover{QStringLiteral("Test")};
    QSignalSpy shown{&popover, &Popover::aboutToShow};
    QSignalSpy closed{&popover, &Popover::closed};
    QRect item{100, 0, 40, 24};

    Opened() {
        popover.add(new KeyValueRow(QStringLiteral("Key")));
        popover.setFooter(new FooterButtons);
        popover.showAt(item);
    }
};

TEST(Popover, escapeClosesAndItOpensAgain) {
    Opened test;
    ASSERT_TRUE(test.popover.isVisible());
    QTest::keyClick(&test.popover, Qt::Key_Escape);
    EXPECT_FALSE(test.popover.isVisible());
    EXPECT_EQ(test.closed.count(), 1);
    EXPECT_FALSE(test.popover.closedByPressAt(test.item.center()));
    test.popover.showAt(test.item);
    EXPECT_EQ(test.shown.count(), 2);
    EXPECT_TRUE(test.popover.isVisible());
}

// Catches the second click on an item closing and at once reopening its popover, and a click
// elsewhere that keeps the item from opening it.
TEST(Popover, knowsThePressThatClosedIt) {
    struct Row {
        QPoint press;
        QPoint release;
        bool same;
    };
    for (const Row& row : {Row{{110, 10}, {112, 12}, true},
                           {{700, 500}, {112, 12}, false},
                           {{110, 10}, {400, 12}, false},
                           {{160, 10}, {163, 12}, true},  // the item is wider than the anchor
                           {{160, 10}, {110, 12}, false}}) {
        Opened test;
        QTest::mousePress(&test.popover, Qt::LeftButton, {}, test.popover.mapFromGlobal(row.press));
        EXPECT_FALSE(test.popover.isVisible());
        EXPECT_EQ(test.closed.count(), 1);
        EXPECT_EQ(test.popover.closedByPressAt(row.release), row.same) << row.press.x();
        EXPECT_FALSE(test.popover.closedByPressAt(row.release)) << "the next click is a new one";
    }
}

// Catches a bar in which the next item needs two clicks while a popover is open.
TEST(Popover, thePressThatClosesItReachesTheWidgetUnderIt) {
    struct Target : QWidget {
        void mousePressEvent(QMouseEvent*) override { ++presses; }
        int presses = 0;
    } target;
    target.setGeometry(500, 400, 60, 60);
    target.show();
    Opened test;
    const QPoint press = target.geometry().center();
    QTest::mousePress(&test.popover, Qt::LeftButton, {}, test.popover.mapFromGlobal(press));
    EXPECT_TRUE(QTest::qWaitFor([&] { return target.presses == 1; }, 5000));
}

TEST(Popover, aPressInsideKeepsItOpenAndTabReachesTheButtons) {
    Opened test;
    QTest::mousePress(&test.popover, Qt::LeftButton, {}, test.popover.rect().center());
    EXPECT_TRUE(test.popover.isVisible());
    QTest::keyClick(&test.popover, Qt::Key_Tab);
    const auto* first = qobject_cast<QAbstractButton*>(test.popover.focusWidget());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->accessibleName(), QStringLiteral("Open in Task Manager"));
    QTest::keyClick(&test.popover, Qt::Key_Tab);
    EXPECT_NE(test.popover.focusWidget(), first);
}

// Catches a window that keeps its height, content that is cut off, and a footer that scrolls away.
TEST(Popover, followsItsContentAndScrollsWhatIsTooHigh) {
    Opened test;
    auto* scroll = test.popover.findChild<QScrollArea*>();
    const int before = test.popover.height();
    auto* note = new NoteLine;
    test.popover.add(note);
    note->setNote(QStringLiteral("A note of one line"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return test.popover.height() > before; }, 5000));
    EXPECT_LT(test.popover.height(), before + 60);
    EXPECT_EQ(scroll->verticalScrollBar()->maximum(), 0);

    note->setNote(QString());
    ASSERT_TRUE(QTest::qWaitFor([&] { return test.popover.height() <= before + 4; }, 5000));

    for (int i = 0; i < 80; ++i) {
        test.popover.add(new KeyValueRow(QString::number(i)));
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return scroll->verticalScrollBar()->maximum() > 0; }, 5000));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    auto* footer = test.popover.findChild<FooterButtons*>();
    const QRect footerRect(footer->mapToGlobal(QPoint()), footer->size());
    EXPECT_TRUE(screen.contains(footerRect));
}

}  // namespace
}  // namespace vostel
