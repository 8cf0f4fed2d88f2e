#include "backends/cameras/PipeWireDevices.h"

#include <gtest/gtest.h>

#include "backends/cameras/CameraList.h"
#include "backends/cameras/gst_pointers.h"
#include "tests/support/Environment.h"
#include "tests/support/SilentSocket.h"

namespace vistrane {
namespace {

/// How often a monitor was started, and how many of the first starts fail.
int monitorStarts = 0;
int failingStarts = 0;

// A device provider like PipeWire's, in GObject's way.
struct TestMonitor {
    GstDeviceProvider parent;
};
struct TestMonitorClass {
    GstDeviceProviderClass parent;
};

G_DEFINE_TYPE(TestMonitor, test_monitor, GST_TYPE_DEVICE_PROVIDER)

void test_monitor_init(TestMonitor*) {}

void test_monitor_class_init(TestMonitorClass* type) {
    auto* const properties = G_OBJECT_CLASS(type);
    properties->set_property = [](GObject*, guint, const GValue*, GParamSpec*) {};
    g_object_class_install_property(
        properties, 1,
        g_param_spec_int("fd", "fd", "fd", -1, G_MAXINT, -1,
                         static_cast<GParamFlags>(G_PARAM_WRITABLE | G_PARAM_STATIC_STRINGS)));
    GST_DEVICE_PROVIDER_CLASS(type)->start = [](GstDeviceProvider*) -> gboolean {
        return ++monitorStarts > failingStarts ? TRUE : FALSE;
    };
}

TEST(DeviceMonitor, OneThatCannotBeStartedIsNotKept) {
    ASSERT_TRUE(startGStreamer());
    // Takes the connection; the monitor itself does not use it.
    const SilentSocket pipeWire;
    const Environment remote("PIPEWIRE_REMOTE", pipeWire.path().c_str());
    const GstPointer<GstDeviceProvider> any(
        GST_DEVICE_PROVIDER(gst_object_ref_sink(g_object_new(test_monitor_get_type(), nullptr))));
    failingStarts = 2;
    for (const int starts : {1, 2, 3, 3}) {
        EXPECT_EQ(PipeWireDevices::shared().list(any.get()), nullptr);
        EXPECT_EQ(monitorStarts, starts);
    }
}

} // namespace
} // namespace vistrane
