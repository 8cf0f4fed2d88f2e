#include "backends/qt/system/message_bus.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>

#include "backends/posix/Descriptor.h"

namespace vistrane {

namespace {

constexpr char sessionVariable[] = "DBUS_SESSION_BUS_ADDRESS";

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// By the rules of the bus's own clients. Empty if there is no bus, or only one that is still to be
/// started.
std::string addressOf(MessageBus bus) {
    const bool isSession = bus == MessageBus::session;
    std::string address = environment(isSession ? sessionVariable : "DBUS_SYSTEM_BUS_ADDRESS");
    if (!address.empty()) {
        return address;
    }
    const std::string folder = environment("XDG_RUNTIME_DIR");
    return !isSession       ? "unix:path=/var/run/dbus/system_bus_socket"
           : folder.empty() ? ""
                            : "unix:path=" + folder + "/bus";
}

/// The value of "key=" in the first of an address's alternatives, "unix:path=/run/bus,guid=..;...".
std::string valueIn(std::string_view address, std::string_view key) {
    address = address.substr(0, address.find(';'));
    const std::size_t at = address.find(key);
    if (!address.starts_with("unix:") || at == std::string_view::npos) {
        return {};
    }
    address.remove_prefix(at + key.size());
    const std::string_view value = address.substr(0, address.find(','));
    return QByteArray::fromPercentEncoding(
               QByteArray(value.data(), static_cast<qsizetype>(value.size())))
        .toStdString();
}

/// A connection to the address's socket. Closed, and `errno` set, if there is none.
Descriptor connectTo(const std::string& address) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::string path = valueIn(address, "path=");
    if (path.empty()) {
        path = valueIn(address, "abstract=");
        path.insert(0, path.empty() ? 0 : 1, '\0');
    }
    errno = EINVAL;
    if (path.empty() || path.size() >= sizeof name.sun_path) {
        return Descriptor();
    }
    std::memcpy(name.sun_path, path.data(), path.size());
    // The length counts: an abstract name has no end mark.
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size() +
                                               (path.front() == '\0' ? 0 : 1));
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool isConnected =
        socket.isOpen() &&
        ::connect(socket.number(), reinterpret_cast<const sockaddr*>(&name), length) == 0;
    return isConnected ? std::move(socket) : Descriptor();
}

/// Takes the first step of every client. A bus that works answers, even if it refuses.
template <typename Left>
bool answers(int socket, Left left) {
    constexpr std::string_view greeting("\0AUTH\r\n", 7);
    if (writeAll(socket, greeting.data(), greeting.size()) != 0) {
        return true;
    }
    pollfd answer{socket, POLLIN, 0};
    int count = 0;
    do {
        count = ::poll(&answer, 1, static_cast<int>(left()));
    } while (count < 0 && errno == EINTR);
    return count != 0;
}

} // namespace

bool hangs(MessageBus bus, std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    const auto left = [end] {
        const auto time = end - std::chrono::steady_clock::now();
        return std::max<std::int64_t>(std::chrono::ceil<std::chrono::milliseconds>(time).count(),
                                      0);
    };
    const std::string address = addressOf(bus);
    for (;;) {
        const Descriptor socket = connectTo(address);
        // EAGAIN: so many clients wait that the bus takes no more.
        if (!socket.isOpen() && errno == EAGAIN && left() > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            continue;
        }
        return socket.isOpen() ? !answers(socket.number(), left) : errno == EAGAIN;
    }
}

bool leaveHangingSessionBus() {
    // Every client refuses this address at once.
    return hangs(MessageBus::session) && ::setenv(sessionVariable, "disabled:", 1) == 0;
}

} // namespace vistrane
