#pragma once

#include <mutex>

#include <gst/gst.h>

namespace vistrane {

/// The devices of this user's PipeWire, from its device provider. Any thread.
///
/// Asked for its devices, the provider connects, reads them and disconnects. In PipeWire up to at
/// least 0.3.65, an event that arrives while it disconnects uses the connection's null pointer: if
/// a camera is plugged in at that moment, the program crashes. Stopping a provider that monitors
/// corrupts the heap. So one monitors for as long as its connection lasts and is never stopped or
/// destroyed. Each restart of PipeWire leaves one provider behind, with a thread and a connection.
class PipeWireDevices {
public:
    /// Never destroyed, because PipeWire's thread uses the provider until the process ends.
    static PipeWireDevices& shared();

    /// The current devices; the caller owns the list and its elements. Null without PipeWire, or if
    /// its provider cannot be started; the next call tries again. The first call, and the first
    /// after PipeWire has been restarted, waits for PipeWire's answer. `any` is a provider of
    /// PipeWire's type.
    GList* list(GstDeviceProvider* any);

private:
    PipeWireDevices() = default;

    std::mutex mutex_;
    struct Monitor;
    Monitor* monitor_ = nullptr;
};

} // namespace vistrane
