#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backends/cameras/AwakeClock.h"
#include "backends/cameras/CameraList.h"
#include "backends/cameras/CameraObserver.h"
#include "backends/cameras/CameraOptions.h"
#include "backends/cameras/CaptureEngine.h"
#include "backends/cameras/CapturePipeline.h"
#include "backends/cameras/gst_pointers.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The state of a `CaptureEngine`, shared by the main thread, the engine's thread and GStreamer's
/// threads. Lives until the last of them releases it; if a driver hangs, it outlives the engine.
struct CaptureCore : std::enable_shared_from_this<CaptureCore> {
    using Clock = AwakeClock;

    enum class Phase {
        idle,
        /// `CaptureEngine::open` waits for the first picture. A failure is reported to its caller
        /// only.
        opening,
        /// Waiting for the first picture.
        starting,
        live,
        /// Waiting for the camera to come back.
        gone,
    };

    /// The camera that should run.
    struct Target {
        Camera camera;
        AVCaptureSessionPreset preset = AVCaptureSessionPresetPhoto;
    };

    struct StillRequest {
        std::uint64_t number = 0;
        Clock::time_point deadline;
        /// The time of the last picture before the request.
        GstClockTime after = GST_CLOCK_TIME_NONE;
    };

    CaptureCore(std::shared_ptr<CameraList> cameraList, CameraObserver& cameraObserver,
                CameraOptions cameraOptions, CaptureEngine::Receiver outcomeReceiver)
        : list(std::move(cameraList)), options(cameraOptions), receiver(std::move(outcomeReceiver)),
          observer(&cameraObserver) {}

    const std::shared_ptr<CameraList> list;
    const CameraOptions options;
    const CaptureEngine::Receiver receiver;

    std::mutex mutex;
    std::condition_variable changed;

    // Guarded by the mutex.
    /// All times below are this clock's.
    AwakeClock clock;
    CameraObserver* observer;
    bool quitting = false;
    bool threadHasEnded = false;
    std::optional<Target> target;
    /// Counts changes of the target. Each pipeline belongs to one number.
    std::uint64_t targetNumber = 0;
    std::uint64_t servedTarget = 0;
    Phase phase = Phase::idle;
    std::deque<StillRequest> requests;
    bool previewWanted = false;
    /// Counts pipelines, to recognise late events of an old one.
    std::uint64_t run = 0;
    bool pictureCame = false;
    Clock::time_point lastPicture;
    GstClockTime lastPictureTime = GST_CLOCK_TIME_NONE;
    /// Until when a live camera may be reopened before it counts as disconnected.
    Clock::time_point reopeningEnd;
    /// The last pause of the process after which the camera's pictures were checked.
    Clock::time_point settledPause = clock.lastPause();
    std::optional<std::string> failure;
    GstPointer<GstSample> taken;
    /// The last failure of an attempt to open the camera.
    std::optional<NSError> openingError;
    /// The time between two pictures in the camera's mode; 0 if unknown.
    std::chrono::milliseconds period{0};
    std::shared_ptr<CapturePipeline> pipeline;

    // Used by the engine's thread only.
    /// A pipeline that hangs in its driver. No new one is created until it has ended.
    std::shared_ptr<CapturePipeline> stuck;
    /// The other cameras in the last listing that had the target's camera.
    std::vector<std::string> others;
    CameraFacts current;
    /// The number of pipelines created for the target.
    std::uint64_t attempts = 0;
    /// The deadline for the first picture of the current pipeline.
    Clock::time_point attemptEnd;
    /// The deadline for the first picture of any pipeline. After it the camera counts as
    /// disconnected.
    Clock::time_point startEnd;
    /// After this time, an attempt to open the camera that fails is not repeated.
    Clock::time_point lastReopening;
    Clock::time_point nextAttempt;
    Clock::time_point nextLook;

    /// The timeout, or three periods of a slow camera if that is longer.
    std::chrono::milliseconds forCamera(std::chrono::milliseconds timeout) const {
        return std::max(timeout, 3 * period);
    }

    // The engine's thread. Methods with a `Lock` argument release it around calls that may block.
    using Lock = std::unique_lock<std::mutex>;
    void work();
    void serveTarget(Lock& lock);
    void attempt(Lock& lock);
    std::optional<Camera> lookForCamera(const Target& wanted);
    std::optional<bool> isStillListed(Lock& lock);
    void confirm(Lock& lock);
    void tryAgain(Lock& lock);
    void goLive();
    void watch(Lock& lock);
    bool isSilentAfterPause(Clock::time_point now);
    void lose(Lock& lock, const std::string& reason);
    void refuse(Lock& lock, NSError reason);
    void serveStill(Lock& lock);
    void expireRequests();
    void dropPipeline(Lock& lock);
    Clock::time_point nextTime();
    bool hasWork() const;

    // GStreamer's threads.
    PipelineEvents events(std::uint64_t ofRun);
    void pictureArrived(std::uint64_t ofRun, GstClockTime time);
    void stillArrived(std::uint64_t ofRun, GstSample* sample);
    void previewArrived(std::uint64_t ofRun, GstSample* sample);
    void failed(std::uint64_t ofRun, const std::string& reason);

    // Any thread, with the mutex locked.
    /// Returns the target's number.
    std::uint64_t setTarget(std::optional<Target> newTarget, Phase newPhase);
    bool isOpen(const Camera& camera, AVCaptureSessionPreset preset) const;
    bool isStarting() const { return phase == Phase::opening || phase == Phase::starting; }
    /// Whether the camera is too slow for its first picture to arrive before `open` has to return.
    bool isSlowAndStarted() const;
    void failRequests(const NSError& error);
    void report(const std::string& message) const;
};

} // namespace vistrane
