#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "backends/cameras/camera_facts.h"
#include "backends/cameras/camera_modes.h"

namespace vistrane {

/// A camera as one listing found it.
struct Camera {
    CameraFacts facts;
    /// What opens it; null for the demo camera.
    std::shared_ptr<GstDevice> device;
    std::shared_ptr<const std::vector<CameraMode>> modes;

    bool isDemo() const { return device == nullptr; }
};

/// Asks this system's providers which cameras there are. Any thread.
///
/// Each question goes to the providers afresh and in parallel: watching them instead would miss
/// the cameras of a PipeWire that was restarted, and PipeWire's watcher, at least up to 0.3.65,
/// damages the heap when it is stopped. A provider that hangs costs the waiting time and one
/// thread, however often it is asked.
class CameraList : public std::enable_shared_from_this<CameraList> {
public:
    /// Starts nothing: that happens with `prepare` or the first question.
    CameraList();
    ~CameraList();
    CameraList(const CameraList&) = delete;
    CameraList& operator=(const CameraList&) = delete;

    /// Finds out whom to ask, on a thread of its own: loading the providers takes longer than they
    /// take to answer. A question that comes meanwhile waits for it. Main thread only.
    void prepare();

    /// Every camera once, in the platform's order, without the demo camera. Waits for slow
    /// providers at most `patience`, then goes on without them.
    std::vector<Camera> list(std::chrono::milliseconds patience);

    /// Every camera of one provider.
    std::vector<Camera> listOf(const std::string& provider, std::chrono::milliseconds patience);

private:
    struct Provider;

    void findProviders();

    std::once_flag providersFound_;
    std::vector<std::shared_ptr<Provider>> providers_;
};

/// The moving test picture.
Camera demoCamera();

/// Starts GStreamer with the first call, without a look at the program's arguments. Whether it
/// works.
bool startGStreamer();

} // namespace vistrane
