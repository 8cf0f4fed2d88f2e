#pragma once

#include <cstring>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/WorkFolder.h"

namespace vistrane {

/// A message bus that hangs: its socket takes connections, and nothing ever answers.
class SilentSocket {
public:
    SilentSocket() : path_(folder_ / "bus") {
        sockaddr_un name{};
        name.sun_family = AF_UNIX;
        std::strncpy(name.sun_path, path_.c_str(), sizeof name.sun_path - 1);
        constexpr int waiting = 50;
        works_ = ::bind(socket_, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 &&
                 ::listen(socket_, waiting) == 0;
    }
    ~SilentSocket() { ::close(socket_); }
    SilentSocket(const SilentSocket&) = delete;
    SilentSocket& operator=(const SilentSocket&) = delete;

    /// The address of the bus; empty if it cannot be made.
    std::string address() const { return works_ ? "unix:path=" + path_ : ""; }

    const std::string& path() const { return path_; }

private:
    WorkFolder folder_;
    std::string path_;
    int socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool works_ = false;
};

} // namespace vistrane
