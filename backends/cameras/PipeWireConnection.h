#pragma once

namespace vistrane {

/// A private connection to this user's PipeWire.
///
/// By default, GStreamer's PipeWire elements share one connection with its listing of cameras. The
/// listing, at least up to 0.3.65, leaves callbacks on it that crash when a camera is disconnected.
/// With a private connection for each element, the listing's connection is short-lived.
class PipeWireConnection {
public:
    PipeWireConnection();
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    /// The descriptor, owned by this object; -1 if PipeWire does not answer. This object must
    /// outlive the element that uses it.
    int file() const { return file_; }

private:
    int file_;
};

} // namespace vistrane
