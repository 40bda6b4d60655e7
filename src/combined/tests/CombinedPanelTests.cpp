#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTest>

#include "combined/CombinedSettingsPanel.h"
#include "combined/SegmentRow.h"
#include "combined/tests/FakeSegments.h"

namespace vostel {
namespace {

class CombinedPanelTest : public testing::Test, protected FakeWorld {
  protected:
    CombinedPanelTest() {
        panel.resize(600, 500);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&panel));
    }
    // From the top of the page, as they are seen.
    std::vector<SegmentRow*> rows() const {
        const auto found = panel.findChildren<SegmentRow*>();
        std::vector<SegmentRow*> result(found.begin(), found.end());
        std::ranges::sort(result, {}, [](const SegmentRow* row) { return row->y(); });
        EXPECT_TRUE(std::equal(result.begin(), result.end(), found.begin()))
            << "a screen reader goes through them in another order";
        return result;
    }
    QString seen() const {
        QString ids;
        for (const SegmentRow* row : rows()) {
            ids += row->id();
        }
        return ids;
    }
    QString stored() const { return settings.order().join(QString()); }
    QAbstractButton* control(const char* name) const {
        for (auto* each : panel.findChildren<QAbstractButton*>()) {
            if (each->accessibleName() == QLatin1String(name)) {
                return each;
            }
        }
        return nullptr;
    }

    CombinedSettingsPanel panel{settings, notifications};
};

TEST_F(CombinedPanelTest, rowsAreDraggedWithTheMouse) {
    QWidget* list = rows().front()->parentWidget();
    const int pitch = rows()[1]->y() - rows()[0]->y();
    const auto at = [&](int row) { return QPoint(60, row * pitch + 15); };
    const struct {
        int from, to;
        const char* order;
    } moves[] = {{0, 2, "bcad"}, {3, 0, "dbca"}, {1, 1, "dbca"}, {0, 9, "bcad"}};
    for (const auto& move : moves) {
        int posts = 0;
        const auto subscription =
            notifications.subscribe(CombinedSettings::changeNotification, [&] { ++posts; });
        const QString before = stored();
        QTest::mousePress(list, Qt::LeftButton, {}, at(move.from));
        for (int step = 0; step <= 10; ++step) {
            QTest::mouseMove(list, at(move.from) + (at(move.to) - at(move.from)) * step / 10);
        }
        EXPECT_EQ(stored(), before) << "written before it was let go";
        QTest::mouseRelease(list, Qt::LeftButton, {}, at(move.to));
        EXPECT_EQ(stored(), QLatin1String(move.order));
        EXPECT_EQ(seen(), QLatin1String(move.order));
        EXPECT_EQ(posts, before == stored() ? 0 : 1);
    }
    // What changes meanwhile from outside wins; the release must not bring the old order back.
    QTest::mousePress(list, Qt::LeftButton, {}, at(0));
    QTest::mouseMove(list, at(2));
    settings.setOrder({QStringLiteral("d"), QStringLiteral("a")});
    QTest::mouseMove(list, at(3));
    QTest::mouseRelease(list, Qt::LeftButton, {}, at(2));
    EXPECT_EQ(stored(), QStringLiteral("dabc"));
    EXPECT_EQ(seen(), stored());
}

// Catches a keyboard that loses the row it moves, and one that moves it out of the list.
TEST_F(CombinedPanelTest, theKeyboardMovesARowAndStaysWithIt) {
    control("Title a")->setFocus();
    for (const char* expected : {"bacd", "bcad", "bcda", "bcda"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down, Qt::AltModifier);
        EXPECT_EQ(stored(), QLatin1String(expected));
        EXPECT_EQ(seen(), QLatin1String(expected));
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(stored(), QStringLiteral("bcad"));
    QAbstractButton* up = control("Move Title a Up");
    up->setFocus(Qt::TabFocusReason);
    for (int i = 0; i < 2; ++i) {
        QTest::keyClick(up, Qt::Key_Space);
    }
    EXPECT_EQ(stored(), QStringLiteral("abcd"));
    EXPECT_FALSE(up->isEnabled());
    EXPECT_EQ(QApplication::focusWidget(), control("Move Title a Down"));
    // Tab goes on in the order that is seen.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), control("Move Title b Up"));
}

TEST_F(CombinedPanelTest, switchesWriteAndFollow) {
    QTest::mouseClick(control("Title c"), Qt::LeftButton);
    EXPECT_FALSE(settings.isEnabled(QStringLiteral("c")));
    settings.setEnabled(QStringLiteral("c"), true);
    settings.setEnabled(QStringLiteral("a"), false);
    EXPECT_TRUE(control("Title c")->isChecked());
    EXPECT_FALSE(control("Title a")->isChecked());
}

}  // namespace
}  // namespace vostel
