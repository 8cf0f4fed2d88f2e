#include "backends/cameras/PhotoBytes.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vistrane {

namespace {

bool writeAll(int file, const std::uint8_t* bytes, std::size_t length) {
    while (length > 0) {
        const ssize_t written = write(file, bytes, length);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        if (written > 0) {
            bytes += written;
            length -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

bool isRegular(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

PhotoBytes::PhotoBytes(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

const std::uint8_t* PhotoBytes::bytes() const {
    return bytes_.data();
}

std::size_t PhotoBytes::length() const {
    return bytes_.size();
}

bool PhotoBytes::writeToFile(const std::string& path, bool atomically) const {
    std::string target = path;
    int file = -1;
    if (atomically) {
        target += ".XXXXXX";
        file = mkostemp(target.data(), O_CLOEXEC);
    } else {
        // Neither a pipe without a reader nor a terminal may hold this up or be taken over.
        file = open(target.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    }
    if (file < 0) {
        return false;
    }
    bool works =
        isRegular(file) && ftruncate(file, 0) == 0 && writeAll(file, bytes_.data(), bytes_.size());
    works = close(file) == 0 && works;
    if (atomically) {
        works = works && chmod(target.c_str(), 0644) == 0 &&
                std::rename(target.c_str(), path.c_str()) == 0;
        if (!works) {
            unlink(target.c_str());
        }
    }
    return works;
}

} // namespace vistrane
