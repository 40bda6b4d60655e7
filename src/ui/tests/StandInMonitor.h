#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace vostel {

// While it lives, the only program on PATH is a system monitor that does nothing.
class StandInMonitor {
  public:
    StandInMonitor() {
        QFile program(folder.filePath(QStringLiteral("xfce4-taskmanager")));
        EXPECT_TRUE(program.open(QFile::WriteOnly));
        program.write("#!/bin/sh\n");
        program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        qputenv("PATH", folder.path().toUtf8());
    }
    ~StandInMonitor() { qputenv("PATH", path); }
    StandInMonitor(const StandInMonitor&) = delete;
    StandInMonitor& operator=(const StandInMonitor&) = delete;

  private:
    QByteArray path = qgetenv("PATH");
    QTemporaryDir folder;
};

}  // namespace vostel
