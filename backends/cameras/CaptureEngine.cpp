#include "backends/cameras/CaptureEngine.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "backends/cameras/CapturePipeline.h"
#include "backends/cameras/camera_errors.h"
#include "backends/cameras/still_pictures.h"
#include "backends/posix/threads.h"

namespace vistrane {

namespace {

using Clock = std::chrono::steady_clock;

enum class Phase {
    idle,
    /// The first picture has not come yet.
    starting,
    live,
    /// Waiting for the camera to come back.
    gone,
};

struct Wish {
    Camera camera;
    AVCaptureSessionPreset preset = AVCaptureSessionPresetPhoto;
};

struct Request {
    std::uint64_t number = 0;
    Clock::time_point deadline;
    /// The time of the last picture before the request.
    GstClockTime after = GST_CLOCK_TIME_NONE;
};

/// The pause before the next attempt while a camera is only starting.
constexpr std::chrono::milliseconds moment{200};

bool isLaterThan(GstClockTime after, GstClockTime time) {
    return !GST_CLOCK_TIME_IS_VALID(after) || !GST_CLOCK_TIME_IS_VALID(time) || time > after;
}

} // namespace

/// What the main thread, the engine's thread and GStreamer's threads share. Lives until the last of
/// them has let go, which for a hanging driver is after the engine.
struct CaptureEngine::Core : std::enable_shared_from_this<CaptureEngine::Core> {
    Core(std::shared_ptr<CameraList> cameraList, MediaObserver& mediaObserver,
         CameraOptions cameraOptions, Receiver outcomeReceiver)
        : list(std::move(cameraList)), options(cameraOptions), receiver(std::move(outcomeReceiver)),
          observer(&mediaObserver) {}

    const std::shared_ptr<CameraList> list;
    const CameraOptions options;
    const Receiver receiver;

    std::mutex mutex;
    std::condition_variable changed;

    // Under the mutex, by whichever thread.
    MediaObserver* observer;
    bool quitting = false;
    bool threadHasEnded = false;
    std::optional<Wish> wish;
    /// Counts the wishes; a run of the camera belongs to one of them.
    std::uint64_t wishNumber = 0;
    std::uint64_t servedWish = 0;
    Phase phase = Phase::idle;
    std::deque<Request> requests;
    bool previewWanted = false;
    /// Counts the pipelines, so that a late event of an old one is told from a new one's.
    std::uint64_t run = 0;
    bool pictureCame = false;
    Clock::time_point lastPicture;
    GstClockTime lastPictureTime = GST_CLOCK_TIME_NONE;
    std::optional<std::string> failure;
    GstPointer<GstSample> taken;
    /// Between two pictures, as the camera's mode has it; 0 when that is not known.
    std::chrono::milliseconds period{0};
    std::shared_ptr<CapturePipeline> pipeline;

    // Only the engine's thread.
    /// A pipeline that a driver does not let go; as long as it is there, no other is begun.
    std::shared_ptr<CapturePipeline> stuck;
    /// The cameras beside the wanted one when it was last seen.
    std::vector<std::string> others;
    CameraFacts current;
    /// The attempts since the wish that opened the camera, and when the last one is given up.
    std::uint64_t attempts = 0;
    Clock::time_point attemptEnd;
    /// When a camera that never gave a picture counts as gone.
    Clock::time_point startEnd;
    Clock::time_point nextAttempt;
    Clock::time_point nextLook;

    /// A waiting time, or more of it for a camera that is slow by itself.
    std::chrono::milliseconds patient(std::chrono::milliseconds time) const {
        return std::max(time, 3 * period);
    }

    // The engine's thread, in running order. Those with a lock let go of it for whatever may last.
    using Lock = std::unique_lock<std::mutex>;
    void work();
    void serveWish(Lock& lock);
    void attempt(Lock& lock);
    std::optional<Camera> lookForCamera(const Wish& wanted);
    std::optional<bool> isStillListed(Lock& lock);
    void confirm(Lock& lock);
    void tryAgain(Lock& lock);
    void goLive();
    void watch(Lock& lock);
    void lose(Lock& lock, const std::string& reason);
    void serveStill(Lock& lock);
    void expireRequests();
    void dropPipeline(Lock& lock);
    Clock::time_point nextTime() const;
    bool hasWork() const;

    // GStreamer's threads.
    PipelineEvents events(std::uint64_t ofRun);
    void pictureArrived(std::uint64_t ofRun, GstClockTime time);
    void stillArrived(std::uint64_t ofRun, GstSample* sample);
    void previewArrived(std::uint64_t ofRun, GstSample* sample);
    void failed(std::uint64_t ofRun, const std::string& reason);

    // Any thread, under the mutex.
    void failRequests(const NSError& error);
    void tell(const std::string& message) const;
};

CaptureEngine::CaptureEngine(std::shared_ptr<CameraList> list, MediaObserver& observer,
                             CameraOptions options, Receiver receiver)
    : core_(std::make_shared<Core>(std::move(list), observer, options, std::move(receiver))) {
    thread_ = startThread([core = core_] { core->work(); });
    // Without a thread every still fails: as if the camera were not running.
    core_->threadHasEnded = !thread_.joinable();
}

CaptureEngine::~CaptureEngine() {
    std::unique_lock lock(core_->mutex);
    core_->wish.reset();
    ++core_->wishNumber;
    core_->phase = Phase::idle;
    core_->failRequests(sessionWasStopped());
    core_->quitting = true;
    core_->observer = nullptr;
    core_->changed.notify_all();
    const bool ended = core_->changed.wait_for(lock, core_->options.patience,
                                               [this] { return core_->threadHasEnded; });
    lock.unlock();
    if (!thread_.joinable()) {
        return;
    }
    if (ended) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void CaptureEngine::start(Camera camera, AVCaptureSessionPreset preset) {
    std::unique_lock lock(core_->mutex);
    core_->wish = Wish{std::move(camera), preset};
    const std::uint64_t number = ++core_->wishNumber;
    core_->phase = Phase::starting;
    core_->changed.notify_all();
    core_->changed.wait_for(lock, core_->options.patience, [this, number] {
        return core_->servedWish == number && core_->phase != Phase::starting;
    });
}

void CaptureEngine::stop() {
    std::unique_lock lock(core_->mutex);
    core_->wish.reset();
    const std::uint64_t number = ++core_->wishNumber;
    core_->phase = Phase::idle;
    core_->failRequests(sessionWasStopped());
    core_->changed.notify_all();
    core_->changed.wait_for(lock, core_->options.patience,
                            [this, number] { return core_->servedWish == number; });
    core_->receiver.preview(nullptr);
}

bool CaptureEngine::isRunning() const {
    std::lock_guard lock(core_->mutex);
    return core_->wish.has_value() && !core_->threadHasEnded;
}

void CaptureEngine::requestStill(std::uint64_t request) {
    std::lock_guard lock(core_->mutex);
    if (!core_->wish || core_->threadHasEnded) {
        core_->receiver.still(request, StillOutcome{{}, sessionNotRunning()});
        return;
    }
    if (core_->phase == Phase::gone) {
        core_->receiver.still(
            request, StillOutcome{{}, cameraGivesNoPictures(core_->wish->camera.facts.name, "")});
        return;
    }
    core_->requests.push_back(Request{request, Clock::now() + core_->patient(core_->options.still),
                                      core_->lastPictureTime});
    if (core_->pipeline) {
        core_->pipeline->wantStills(true);
    }
    core_->changed.notify_all();
}

void CaptureEngine::wantPreview(bool wanted) {
    std::lock_guard lock(core_->mutex);
    core_->previewWanted = wanted;
    if (core_->pipeline) {
        core_->pipeline->wantPreview(wanted);
    }
}

void CaptureEngine::Core::work() {
    Lock lock(mutex);
    while (!quitting || pipeline) {
        if (servedWish != wishNumber) {
            serveWish(lock);
        } else if (taken) {
            serveStill(lock);
        } else {
            expireRequests();
            watch(lock);
            if (!hasWork()) {
                changed.wait_until(lock, nextTime());
            }
        }
    }
    threadHasEnded = true;
    changed.notify_all();
}

bool CaptureEngine::Core::hasWork() const {
    return quitting || servedWish != wishNumber || taken || failure ||
           (phase != Phase::live && pictureCame);
}

void CaptureEngine::Core::serveWish(Lock& lock) {
    const std::uint64_t number = wishNumber;
    dropPipeline(lock);
    if (number != wishNumber) {
        return;
    }
    servedWish = number;
    if (wish) {
        current = wish->camera.facts;
        others.clear();
        startEnd = Clock::now() + options.firstPicture;
        nextAttempt = Clock::now();
        attempts = 0;
    }
    changed.notify_all();
}

/// Begins a pipeline if the camera is there.
void CaptureEngine::Core::attempt(Lock& lock) {
    nextAttempt = Clock::now() + (phase == Phase::starting ? moment : options.retry);
    if (stuck && !stuck->hasEnded()) {
        return;
    }
    stuck.reset();
    const Wish wanted = *wish;
    const std::uint64_t number = wishNumber;
    const std::uint64_t newRun = ++run;
    failure.reset();
    lock.unlock();

    std::string reason;
    std::shared_ptr<CapturePipeline> made;
    const CameraMode* mode = nullptr;
    const auto camera = lookForCamera(wanted);
    if (camera) {
        const auto& modes = *camera->modes;
        mode = wanted.preset == AVCaptureSessionPresetPhoto ? photoMode(modes) : nullptr;
        mode = mode != nullptr ? mode : movingPictureMode(modes);
        made = mode != nullptr ? CapturePipeline::create(*camera, *mode, events(newRun), reason)
                               : nullptr;
        reason = mode != nullptr ? reason : "its pictures are of no known form";
    }

    lock.lock();
    if (number != wishNumber || run != newRun) {
        return;
    }
    if (!made) {
        if (!reason.empty()) {
            lose(lock, reason);
        }
        return;
    }
    current = camera->facts;
    pictureCame = false;
    lastPicture = Clock::now();
    lastPictureTime = GST_CLOCK_TIME_NONE;
    for (Request& request : requests) {
        request.after = GST_CLOCK_TIME_NONE;
    }
    pipeline = std::move(made);
    pipeline->wantStills(!requests.empty());
    pipeline->wantPreview(previewWanted);
    period = mode->period();
    for (Request& request : requests) {
        request.deadline = std::max(request.deadline, Clock::now() + patient(options.still));
    }
    nextLook = Clock::now() + patient(options.doubt);
    // Some cameras stay silent after one start in many and speak after the next, others are only
    // slow: so a short attempt is followed by a long one.
    const bool isShort = ++attempts % 2 == 1;
    attemptEnd = Clock::now() +
                 patient(isShort ? options.secondTry : options.firstPicture - options.secondTry);
    if (attempts == 1) {
        startEnd = std::max(startEnd, Clock::now() + patient(options.firstPicture));
    }
    if (!pipeline->start()) {
        failure = "the system grants no more threads";
    }
}

std::optional<Camera> CaptureEngine::Core::lookForCamera(const Wish& wanted) {
    if (wanted.camera.isDemo()) {
        return wanted.camera;
    }
    std::vector<Camera> cameras = list->listOf(current.provider, options.listing);
    std::vector<CameraFacts> facts;
    for (const Camera& camera : cameras) {
        facts.push_back(camera.facts);
    }
    const std::size_t found = findAgain(current, others, facts);
    if (found == npos) {
        return std::nullopt;
    }
    others.clear();
    for (std::size_t i = 0; i < facts.size(); ++i) {
        if (i != found) {
            others.push_back(facts[i].instance);
        }
    }
    return std::move(cameras[found]);
}

/// Whether the very camera that is open is listed; nothing when the wish changed meanwhile.
std::optional<bool> CaptureEngine::Core::isStillListed(Lock& lock) {
    const Wish wanted = *wish;
    const std::uint64_t number = wishNumber;
    const std::string instance = current.instance;
    lock.unlock();
    const auto camera = lookForCamera(wanted);
    lock.lock();
    if (number != wishNumber) {
        return std::nullopt;
    }
    return camera && camera->facts.instance == instance;
}

/// The first picture came. A stream may have been given another camera when the wanted one went
/// in the moment between listing and opening; one that is still listed was there all the time.
void CaptureEngine::Core::confirm(Lock& lock) {
    const auto listed = isStillListed(lock);
    if (listed && *listed) {
        goLive();
    } else if (listed) {
        tryAgain(lock);
    }
}

/// Not lost yet: a virtual camera that restarts is back in a moment.
void CaptureEngine::Core::tryAgain(Lock& lock) {
    dropPipeline(lock);
    nextAttempt = Clock::now() + (phase == Phase::starting ? moment : options.retry);
}

void CaptureEngine::Core::goLive() {
    if (phase == Phase::gone) {
        tell("The camera '" + wish->camera.facts.name + "' is back. Capturing goes on.");
    }
    phase = Phase::live;
    changed.notify_all();
}

/// What is due by the clock, or has failed.
void CaptureEngine::Core::watch(Lock& lock) {
    if (servedWish != wishNumber || !wish || quitting) {
        return;
    }
    const auto now = Clock::now();
    if (phase == Phase::starting && now >= startEnd) {
        lose(lock, "");
    } else if (!pipeline) {
        if (now >= nextAttempt) {
            attempt(lock);
        }
    } else if (failure) {
        const std::string reason = *failure;
        const auto listed = phase == Phase::starting ? isStillListed(lock) : true;
        if (listed && *listed) {
            lose(lock, reason);
        } else if (listed) {
            tryAgain(lock);
        }
    } else if (phase != Phase::live && pictureCame) {
        confirm(lock);
    } else if (phase != Phase::live && now >= attemptEnd) {
        tryAgain(lock);
    } else if (phase == Phase::live && now >= lastPicture + patient(options.silence)) {
        lose(lock, "");
    } else if (now >= nextLook && now >= lastPicture + patient(options.doubt)) {
        nextLook = now + patient(options.doubt);
        const auto listed = isStillListed(lock);
        if (listed && !*listed && phase == Phase::live) {
            lose(lock, "");
        } else if (listed && !*listed) {
            tryAgain(lock);
        }
    }
}

void CaptureEngine::Core::lose(Lock& lock, const std::string& reason) {
    const std::uint64_t number = wishNumber;
    const NSError error = cameraGivesNoPictures(wish->camera.facts.name, reason);
    if (phase != Phase::gone) {
        phase = Phase::gone;
        failRequests(error);
        tell(error.localizedDescription);
        receiver.preview(nullptr);
        changed.notify_all();
    }
    dropPipeline(lock);
    if (number == wishNumber) {
        nextAttempt = Clock::now() + options.retry;
    }
}

void CaptureEngine::Core::serveStill(Lock& lock) {
    const GstPointer<GstSample> sample = std::move(taken);
    const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(sample.get()));
    // It was taken for a request that may have had its picture or its error meanwhile.
    if (requests.empty() || !isLaterThan(requests.front().after, time)) {
        return;
    }
    const std::uint64_t number = requests.front().number;
    lock.unlock();
    auto file = portablePixmap(sample.get());
    lock.lock();
    if (requests.empty() || requests.front().number != number) {
        return;
    }
    requests.pop_front();
    if (pipeline) {
        pipeline->wantStills(!requests.empty());
    }
    StillOutcome outcome;
    if (file) {
        outcome.file = std::move(*file);
    } else {
        outcome.error = pictureNotReadable(wish->camera.facts.name);
    }
    receiver.still(number, std::move(outcome));
}

void CaptureEngine::Core::expireRequests() {
    const auto now = Clock::now();
    while (!requests.empty() && now >= requests.front().deadline) {
        const std::uint64_t number = requests.front().number;
        requests.pop_front();
        receiver.still(
            number,
            StillOutcome{{}, noPictureInTime(wish->camera.facts.name, patient(options.still))});
    }
}

void CaptureEngine::Core::dropPipeline(Lock& lock) {
    taken.reset();
    failure.reset();
    pictureCame = false;
    ++run;
    const auto dropped = std::move(pipeline);
    pipeline.reset();
    if (!dropped) {
        return;
    }
    lock.unlock();
    const bool stopped = dropped->stop(options.patience);
    lock.lock();
    if (!stopped) {
        stuck = dropped;
    }
}

Clock::time_point CaptureEngine::Core::nextTime() const {
    const auto now = Clock::now();
    auto next = now + std::chrono::hours(1);
    if (wish) {
        if (!requests.empty()) {
            next = std::min(next, requests.front().deadline);
        }
        if (phase == Phase::starting) {
            next = std::min(next, startEnd);
        }
        if (!pipeline) {
            next = std::min(next, nextAttempt);
        } else {
            next = std::min(next, std::max(nextLook, lastPicture + patient(options.doubt)));
            next = std::min(next, phase == Phase::live ? lastPicture + patient(options.silence)
                                                       : attemptEnd);
        }
    }
    return next;
}

PipelineEvents CaptureEngine::Core::events(std::uint64_t ofRun) {
    const std::weak_ptr<Core> weak = weak_from_this();
    PipelineEvents told;
    told.pictureArrived = [weak, ofRun](GstClockTime time) {
        if (const auto core = weak.lock()) {
            core->pictureArrived(ofRun, time);
        }
    };
    told.still = [weak, ofRun](GstSample* sample) {
        if (const auto core = weak.lock()) {
            core->stillArrived(ofRun, sample);
        }
    };
    told.preview = [weak, ofRun](GstSample* sample) {
        if (const auto core = weak.lock()) {
            core->previewArrived(ofRun, sample);
        }
    };
    told.failed = [weak, ofRun](const std::string& reason) {
        if (const auto core = weak.lock()) {
            core->failed(ofRun, reason);
        }
    };
    return told;
}

void CaptureEngine::Core::pictureArrived(std::uint64_t ofRun, GstClockTime time) {
    std::lock_guard lock(mutex);
    if (ofRun != run) {
        return;
    }
    lastPicture = Clock::now();
    lastPictureTime = time;
    if (!pictureCame) {
        pictureCame = true;
        changed.notify_all();
    }
}

void CaptureEngine::Core::stillArrived(std::uint64_t ofRun, GstSample* sample) {
    std::lock_guard lock(mutex);
    if (ofRun != run || phase != Phase::live || requests.empty() || taken) {
        return;
    }
    const GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (buffer != nullptr && isLaterThan(requests.front().after, GST_BUFFER_PTS(buffer))) {
        taken.reset(gst_sample_ref(sample));
        changed.notify_all();
    }
}

void CaptureEngine::Core::previewArrived(std::uint64_t ofRun, GstSample* sample) {
    std::lock_guard lock(mutex);
    if (ofRun == run && phase == Phase::live && previewWanted) {
        receiver.preview(sample);
    }
}

void CaptureEngine::Core::failed(std::uint64_t ofRun, const std::string& reason) {
    std::lock_guard lock(mutex);
    if (ofRun == run && !failure) {
        failure = reason;
        changed.notify_all();
    }
}

void CaptureEngine::Core::failRequests(const NSError& error) {
    for (const Request& request : requests) {
        receiver.still(request.number, StillOutcome{{}, error});
    }
    requests.clear();
}

void CaptureEngine::Core::tell(const std::string& message) const {
    if (observer != nullptr) {
        observer->cameraChanged(message);
    }
}

} // namespace vistrane
