#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "backends/cameras/camera_facts.h"
#include "backends/cameras/camera_modes.h"

namespace vistrane {

/// A camera in one listing.
struct Camera {
    CameraFacts facts;
    /// Null for the demo camera.
    std::shared_ptr<GstDevice> device;
    std::shared_ptr<const std::vector<CameraMode>> modes;

    /// Of the demo camera: colour bars instead of the scene.
    bool showsBars = false;

    bool isDemo() const { return device == nullptr; }
};

/// Lists the cameras of GStreamer's device providers. Any thread.
///
/// Each listing queries all providers again, in parallel; only PipeWire's monitors its devices (see
/// `PipeWireDevices`). A provider that hangs costs the timeout and at most one thread.
class CameraList : public std::enable_shared_from_this<CameraList> {
public:
    /// Does not initialise GStreamer; `prepare` or the first listing does.
    CameraList();
    ~CameraList();
    CameraList(const CameraList&) = delete;
    CameraList& operator=(const CameraList&) = delete;

    /// Loads the providers in the background, which takes longer than a listing. A listing that is
    /// requested meanwhile waits for that, however long it takes. Main thread only.
    void prepare();

    /// Loads them if that was not done, and waits for that. Returns false if it takes longer than
    /// `timeout`; it then continues in the background. Main thread only.
    bool load(std::chrono::milliseconds timeout);

    /// Every camera once, in the order of `offeredOnce`, without the demo camera. Leaves out
    /// providers that take longer than `timeout`.
    std::vector<Camera> list(std::chrono::milliseconds timeout);

    /// Every camera of one provider.
    std::vector<Camera> listOf(const std::string& provider, std::chrono::milliseconds timeout);

private:
    struct Provider;

    void awaitProviders();
    void findProviders();

    std::once_flag providersFound_;
    std::vector<std::shared_ptr<Provider>> providers_;
};

Camera demoCamera(bool showsBars = false);

/// The first call initialises GStreamer, without the program's arguments. Returns whether that
/// succeeded.
bool startGStreamer();

/// The same on another thread, because a plugin may hang. Returns false if it takes longer than
/// `timeout`; later calls then hang as well. Main thread only.
bool startGStreamerWithin(std::chrono::milliseconds timeout);

} // namespace vistrane
