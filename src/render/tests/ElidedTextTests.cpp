#include <gtest/gtest.h>

#include <QGuiApplication>

#include "render/ElidedText.h"

namespace vostel {
namespace {

// Names come cut to 64 letters; a narrow row then showed "nnn…nnn… (python)".
TEST(ElidedTextTest, OneEllipsisAtEveryWidth) {
    const QFontMetricsF metrics(QGuiApplication::font());
    const QString ellipsis(u'…');
    for (const QString& text :
         {QStringLiteral("a process with a long name… (python)"), QStringLiteral("long name…"),
          QStringLiteral("a name… · As… leep"), QStringLiteral("a name that was not cut before")}) {
        const double whole = metrics.horizontalAdvance(text);
        for (const auto mode : {Qt::ElideMiddle, Qt::ElideRight}) {
            EXPECT_EQ(elided(metrics, text, mode, whole + 1), text);
            for (double width = 1; width < whole - 1; width += 1) {
                const QString shown = elided(metrics, text, mode, width);
                EXPECT_LE(shown.count(ellipsis), 1) << text.toStdString() << " in " << width;
                EXPECT_NE(shown, text);
                EXPECT_LE(metrics.horizontalAdvance(shown),
                          std::max(width, metrics.horizontalAdvance(ellipsis)) + 0.5);
                if (width > whole / 2 && text.contains(ellipsis)) {
                    EXPECT_TRUE(shown.contains(ellipsis)) << "cut without a sign";
                }
            }
        }
    }
    const QString name = QStringLiteral("a process with a long name… (python)");
    const QString shown =
        elided(metrics, name, Qt::ElideMiddle, metrics.horizontalAdvance(name) * 0.75);
    EXPECT_TRUE(shown.startsWith(QStringLiteral("a proc")) &&
                shown.endsWith(QStringLiteral("… (python)")))
        << shown.toStdString();
}

}  // namespace
}  // namespace vostel
