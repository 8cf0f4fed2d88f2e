#pragma once

#include <gst/gst.h>

namespace vistrane {

/// The demo camera's element: a live source of moving colour bars or of `DemoScene`, of which
/// pictures in another format than I420 are black. Floating; null if it cannot be made.
GstElement* demoSource(bool showsBars);

} // namespace vistrane
