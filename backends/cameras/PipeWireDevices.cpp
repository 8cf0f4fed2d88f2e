#include "backends/cameras/PipeWireDevices.h"

#include <memory>

#include "backends/cameras/PipeWireConnection.h"

namespace vistrane {

/// A provider and its own connection. Connections of the providers' choice are shared by all that
/// ask for them, so that a second provider would be given the first one's closed connection.
struct PipeWireDevices::Monitor {
    PipeWireConnection connection;
    GstDeviceProvider* provider = nullptr;
    /// The one of PipeWire's last run. Keeps it reachable for leak checks.
    const Monitor* previous = nullptr;
};

PipeWireDevices& PipeWireDevices::shared() {
    static auto* const devices = new PipeWireDevices;
    return *devices;
}

GList* PipeWireDevices::list(GstDeviceProvider* any) {
    std::lock_guard lock(mutex_);
    if (monitor_ == nullptr || !monitor_->connection.isOpen()) {
        auto next = std::make_unique<Monitor>();
        if (!next->connection.isOpen()) {
            return nullptr;
        }
        next->provider = GST_DEVICE_PROVIDER(gst_object_ref_sink(
            g_object_new(G_OBJECT_TYPE(any), "fd", next->connection.file(), nullptr)));
        if (gst_device_provider_start(next->provider) == FALSE) {
            gst_object_unref(next->provider);
            return nullptr;
        }
        // Nobody reads the messages about each device that comes or goes: they would pile up.
        GstBus* const bus = gst_device_provider_get_bus(next->provider);
        gst_bus_set_flushing(bus, TRUE);
        gst_object_unref(bus);
        next->previous = monitor_;
        monitor_ = next.release();
    }
    return gst_device_provider_get_devices(monitor_->provider);
}

} // namespace vistrane
