#pragma once

#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace vistrane {

/// A pipe: the end to read from, the end to write to.
struct Pipe {
    Pipe() {
        if (pipe(ends) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
    }
    ~Pipe() {
        close(ends[0]);
        close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int ends[2] = {-1, -1};
};

} // namespace vistrane
