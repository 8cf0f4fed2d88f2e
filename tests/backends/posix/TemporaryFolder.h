#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace vistrane {

/// An empty folder, removed with its contents at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "vistrane-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

} // namespace vistrane
