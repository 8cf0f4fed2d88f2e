#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "backends/posix/PosixFileManager.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {

/// The real file system for the file manager's contract, in a temporary folder.
struct PosixFileManagerBackend {
    NSFileManager& fileManager() { return manager; }
    std::string emptyFolder() { return folder.path(); }
    void addFile(const std::string& path) { std::ofstream(path) << "content"; }
    void addFolder(const std::string& path) { std::filesystem::create_directory(path); }

    PosixFileManager manager;
    WorkFolder folder;
};

} // namespace vistrane
