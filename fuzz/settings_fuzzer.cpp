// Takes any bytes as a settings file. They are read, or set aside unchanged, and what is saved then
// comes back beside what was read.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

#include "backends/qt/system/QtUserDefaults.h"

namespace vistrane {

namespace {

namespace fs = std::filesystem;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// A folder of this process, removed at its end.
class Folder {
public:
    Folder() { fs::create_directories(path_); }
    ~Folder() { fs::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// A new name each time, because QSettings remembers what it has read of a file.
    std::string newName() { return path_ / std::to_string(++names_); }

private:
    const fs::path path_ =
        fs::temp_directory_path() / ("vistrane-settings-" + std::to_string(::getpid()));
    std::size_t names_ = 0;
};

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void trySettings(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
    const auto open = [&path] { return QtUserDefaults(path, [](const std::string&) {}); };
    QtUserDefaults defaults = open();
    const bool isAside = fs::exists(path + ".damaged");
    require(contentsOf(isAside ? path + ".damaged" : path) == contents);
    const NSInteger rate = defaults.integerForKey("iFPS");
    const auto folder = defaults.objectForKey("iData");
    require(!isAside || (rate == 0 && !folder));
    // Saving waits for the disk.
    if (contents.size() % 16 != 0) {
        return;
    }
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    const QtUserDefaults later = open();
    require(later.integerForKey("iHour") == 7);
    require(later.integerForKey("iFPS") == rate);
    require(later.objectForKey("iData") == folder);
}

} // namespace

} // namespace vistrane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static vistrane::Folder folder;
    const std::string path = folder.newName();
    vistrane::trySettings(path, std::string(reinterpret_cast<const char*>(data), size));
    std::filesystem::remove(path);
    std::filesystem::remove(path + ".damaged");
    return 0;
}
