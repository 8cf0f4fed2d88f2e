#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

namespace vistrane {

/// A folder of one test, removed with its contents at the end.
class WorkFolder {
public:
    WorkFolder() {
        std::string name = std::filesystem::temp_directory_path() / "vistrane-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            ADD_FAILURE() << "There is no folder for the test.";
        }
        path_ = std::filesystem::canonical(name);
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string path() const { return path_.string(); }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

    /// A new folder in this one.
    std::string makeFolder(const std::string& name) const {
        std::filesystem::create_directory(path_ / name);
        return *this / name;
    }

    /// The names of the entries, hidden ones too, in byte order.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

} // namespace vistrane
