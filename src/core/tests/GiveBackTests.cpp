#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

#include "core/GiveBack.h"

namespace vostel {
namespace {

// Resident pages that come from files, kB.
long residentFiles() {
    QFile status(QStringLiteral("/proc/self/status"));
    EXPECT_TRUE(status.open(QFile::ReadOnly));
    const auto match = QRegularExpression(QStringLiteral("RssFile:\\s+(\\d+)"))
                           .match(QString::fromLatin1(status.readAll()));
    return match.captured(1).toLong();
}

// Catches a call that drops nothing (the format of the kernel's list), and one that drops what does
// not come back.
TEST(GiveBack, DropsCodeThatComesBackWhenItRuns) {
    const long before = residentFiles();
    giveBackMemory();
    const long after = residentFiles();
    EXPECT_LT(after, before * 3 / 4);
    EXPECT_EQ(QString(QStringLiteral("as %1")).arg(QStringLiteral("before")),
              QStringLiteral("as before"));
    EXPECT_GT(residentFiles(), 0);
}

}  // namespace
}  // namespace vostel
