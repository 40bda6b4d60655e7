#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace vostel {

// A folder for the time of a test, to build trees like /proc and /sys in.
class TemporaryTree {
  public:
    TemporaryTree() {
        std::string name = (std::filesystem::temp_directory_path() / "vostel-XXXXXX").string();
        root = mkdtemp(name.data());
    }
    ~TemporaryTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
    TemporaryTree(const TemporaryTree&) = delete;
    TemporaryTree& operator=(const TemporaryTree&) = delete;

    // Writes a file below the root, with its folders.
    void write(const std::string& path, std::string_view text) const {
        const std::filesystem::path file = std::filesystem::path(root) / path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }

    std::string root;
};

}  // namespace vostel
