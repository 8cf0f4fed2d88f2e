#include "backends/cameras/PipeWireConnection.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vistrane {

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Finds the socket by the rules of PipeWire's own clients.
std::string socketPath() {
    std::string name = environment("PIPEWIRE_REMOTE");
    name = name.empty() ? "pipewire-0" : name;
    if (name.front() == '/') {
        return name;
    }
    for (const char* folder : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        if (!environment(folder).empty()) {
            return environment(folder) + "/" + name;
        }
    }
    return {};
}

} // namespace

PipeWireConnection::PipeWireConnection() : file_(-1) {
    const std::string path = socketPath();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    file_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (file_ >= 0 &&
        connect(file_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(file_);
        file_ = -1;
    }
}

bool PipeWireConnection::isOpen() const {
    pollfd descriptor{file_, 0, 0}; // a hangup is always reported
    return file_ >= 0 && poll(&descriptor, 1, 0) != 1;
}

PipeWireConnection::~PipeWireConnection() {
    if (file_ >= 0) {
        close(file_);
    }
}

} // namespace vistrane
