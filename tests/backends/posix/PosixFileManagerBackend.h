#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "backends/posix/PosixFileManager.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {

/// The real file system for the file manager's contract, in a temporary folder.
struct PosixFileManagerBackend {
    NSFileManager& fileManager() { return manager; }
    std::string emptyFolder() { return folder.path(); }
    void addFile(const std::string& path) { std::ofstream(path) << "content"; }
    void addFolder(const std::string& path) { std::filesystem::create_directory(path); }
    void removeAll(const std::string& path) { std::filesystem::remove_all(path); }
    void settle() {
        // Not longer than on a file system with coarse times.
        constexpr int most = 50;
        for (int attempt = 0; attempt < most; ++attempt) {
            const auto names = manager.contentsOfDirectoryAtPath(folder.path());
            if (manager.contentsOfDirectoryAtPath(folder.path()) == names) {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        FAIL() << "The folder is read again and again.";
    }

    PosixFileManager manager;
    WorkFolder folder;
};

} // namespace vistrane
