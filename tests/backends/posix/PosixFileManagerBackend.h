#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "backends/posix/PosixFileManager.h"

namespace vistrane {

/// The real file system for the file manager's contract, in a folder that goes away with it.
struct PosixFileManagerBackend {
    PosixFileManagerBackend() {
        std::string pattern = std::filesystem::temp_directory_path() / "vistrane-XXXXXX";
        root = mkdtemp(pattern.data());
    }
    ~PosixFileManagerBackend() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
    PosixFileManagerBackend(const PosixFileManagerBackend&) = delete;
    PosixFileManagerBackend& operator=(const PosixFileManagerBackend&) = delete;

    NSFileManager& fileManager() { return manager; }
    std::string emptyFolder() { return root; }
    void addFile(const std::string& path) { std::ofstream(path) << "content"; }
    void addFolder(const std::string& path) { std::filesystem::create_directory(path); }

    PosixFileManager manager;
    std::string root;
};

} // namespace vistrane
