#pragma once

namespace vistrane {

/// A connection to this user's PipeWire of its own.
///
/// GStreamer's PipeWire elements and its listing of cameras share one connection by default, and
/// that listing, at least up to 0.3.65, leaves callbacks behind on it that crash when a camera
/// goes. An element with a connection of its own keeps the listing's connection short-lived.
class PipeWireConnection {
public:
    PipeWireConnection();
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    /// Stays this object's; -1 when PipeWire does not answer. An element knows its connection by
    /// this number, so it must stay open as long as the element is.
    int file() const { return file_; }

private:
    int file_;
};

} // namespace vistrane
