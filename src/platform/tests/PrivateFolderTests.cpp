#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "TemporaryTree.h"
#include "platform/PrivateFolder.h"

namespace vostel {
namespace {

namespace fs = std::filesystem;

mode_t modeOf(const std::string& path) {
    struct stat found{};
    return lstat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

TEST(PrivateFolderTest, WhatIsNotThisUsersAloneIsNotTrusted) {
    const TemporaryTree tree;
    const std::string folder = tree.root + "/folder";
    fs::create_directory(folder);
    for (const mode_t mode : {0777, 01777, 0755, 0750, 0710, 0701, 0704}) {
        chmod(folder.c_str(), mode);
        EXPECT_FALSE(isPrivateFolder(folder)) << std::oct << mode;
    }
    chmod(folder.c_str(), 0700);
    EXPECT_TRUE(isPrivateFolder(folder));
    EXPECT_TRUE(isPrivateFolder(folder + "/"));
    fs::create_directory_symlink(folder, tree.root + "/link");
    std::ofstream(tree.root + "/file") << "x";
    chmod((tree.root + "/file").c_str(), 0700);
    for (const std::string& path :
         {tree.root + "/link", tree.root + "/link/", tree.root + "/link//", tree.root + "/file",
          tree.root + "/missing", std::string("/"), std::string("folder"), std::string()}) {
        EXPECT_FALSE(isPrivateFolder(path)) << path;
    }
    // Of somebody else; only root can make one.
    if (geteuid() == 0) {
        ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
        EXPECT_FALSE(isPrivateFolder(folder));
    }
}

TEST(PrivateFolderTest, AFolderThatSomebodyPreparedIsLeftAlone) {
    const TemporaryTree tree;
    const std::string own = tree.root + "/own";
    EXPECT_EQ(makePrivateFolder(own), own);
    EXPECT_EQ(modeOf(own), 0700u);
    EXPECT_EQ(makePrivateFolder(own), own) << "used again";

    const std::string victim = tree.root + "/victim";
    const std::string trap = tree.root + "/trap";
    fs::create_directory(victim);
    chmod(victim.c_str(), 0700);
    fs::create_directory_symlink(victim, trap);
    const std::string open = tree.root + "/open";
    fs::create_directory(open);
    chmod(open.c_str(), 0777);
    for (const std::string& path : {trap, open}) {
        const auto made = makePrivateFolder(path);
        ASSERT_TRUE(made);
        EXPECT_TRUE(made->starts_with(path + ".")) << *made;
        EXPECT_TRUE(isPrivateFolder(*made));
        EXPECT_TRUE(fs::is_empty(path));
    }
    EXPECT_TRUE(fs::is_symlink(trap));
    EXPECT_EQ(modeOf(open), 0777u);
    EXPECT_FALSE(makePrivateFolder(tree.root + "/no/such/folder"));
}

}  // namespace
}  // namespace vostel
