#include "frontends/commandline/demo_folder.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "backends/posix/user_folders.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// The path in a line `XDG_VIDEOS_DIR="$HOME/Videos"` or `XDG_VIDEOS_DIR="/absolute"`. Empty for
/// any other line.
std::string videosOfLine(const std::string& line, const std::string& home) {
    const std::string before = "XDG_VIDEOS_DIR=\"";
    if (line.rfind(before, 0) != 0 || line.size() <= before.size() || line.back() != '"') {
        return {};
    }
    const std::string value = line.substr(before.size(), line.size() - before.size() - 1);
    if (value.rfind("$HOME/", 0) == 0) {
        return home + value.substr(5);
    }
    return !value.empty() && value.front() == '/' ? value : std::string();
}

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H.%M.%S", &parts);
    return text.data();
}

} // namespace

std::string videosFolder() {
    const std::string home = homeFolder();
    std::ifstream list(configurationFolder() + "/user-dirs.dirs");
    std::string found = home + "/Videos";
    for (std::string line; std::getline(list, line);) {
        const std::string value = videosOfLine(line, home);
        if (!value.empty()) {
            found = value;
        }
    }
    return found;
}

NewFolder createDemoFolder(const std::string& parent) {
    std::error_code error;
    std::filesystem::create_directories(parent, error);
    const std::string first = parent + "/Vistrane demo " + localTime();
    std::string path = first;
    for (int number = 2; !error; ++number) {
        if (std::filesystem::create_directory(path, error)) {
            return {path, {}};
        }
        path = first + " " + std::to_string(number);
    }
    return {{},
            "Cannot create a folder in '" + shownText(parent) + "': " + error.message() +
                ". Name a folder: vistrane demo FOLDER."};
}

void removeIfEmpty(const std::string& folder) {
    ::rmdir(folder.c_str());
}

} // namespace vistrane
