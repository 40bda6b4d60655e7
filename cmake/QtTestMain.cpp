#include <gtest/gtest.h>

#include <QApplication>
#include <QStandardPaths>

// Every Qt test runs with an application object on the off-screen platform (CMake sets it in the
// environment) and never sees the user's own folders.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
