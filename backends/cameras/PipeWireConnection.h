#pragma once

namespace vistrane {

/// A private connection to this user's PipeWire.
///
/// By default, GStreamer's PipeWire elements share one connection, also with the listing of
/// cameras. With a private connection, an element does not depend on what the others do with
/// theirs.
class PipeWireConnection {
public:
    PipeWireConnection();
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    /// The descriptor, owned by this object; -1 if PipeWire does not answer. This object must
    /// outlive the element that uses it.
    int file() const { return file_; }

    /// Whether PipeWire holds the other end. Any thread.
    bool isOpen() const;

private:
    int file_;
};

} // namespace vistrane
