#include "frontends/commandline/RoomWarning.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace vistrane {

std::optional<std::string> RoomWarning::frameWasSaved(std::uint64_t size, std::uint64_t room) {
    if (size == 0) {
        return std::nullopt;
    }
    const std::uint64_t frames = room / size;
    if (frames >= 100) {
        reached_ = UINT64_MAX;
        return std::nullopt;
    }
    const std::uint64_t limit = frames < 10 ? 10 : 100;
    if (limit >= reached_) {
        return std::nullopt;
    }
    reached_ = limit;
    return "The disk has room for " + std::to_string(frames) +
           " more frames of this size. Free some space, or the next ones are lost.";
}

std::optional<FileRoom> fileRoom(const std::string& path) {
    struct stat file {};
    struct statvfs disk {};
    if (::stat(path.c_str(), &file) != 0 || ::statvfs(path.c_str(), &disk) != 0) {
        return std::nullopt;
    }
    return FileRoom{static_cast<std::uint64_t>(file.st_size),
                    std::uint64_t{disk.f_bavail} * disk.f_frsize};
}

} // namespace vistrane
