#include "backends/cameras/CaptureCore.h"

#include "backends/cameras/camera_errors.h"
#include "backends/cameras/still_pictures.h"
#include "backends/posix/Descriptor.h"

namespace vistrane {

namespace {

/// The interval between attempts while a camera is starting.
constexpr std::chrono::milliseconds startRetry{200};

bool isLaterThan(GstClockTime after, GstClockTime time) {
    return !GST_CLOCK_TIME_IS_VALID(after) || !GST_CLOCK_TIME_IS_VALID(time) || time > after;
}

} // namespace

void CaptureCore::work() {
    Lock lock(mutex);
    while (!quitting || pipeline) {
        if (servedTarget != targetNumber) {
            serveTarget(lock);
        } else if (taken) {
            serveStill(lock);
        } else {
            expireRequests();
            watch(lock);
            if (!hasWork()) {
                changed.wait_for(lock, nextTime() - clock.now());
            }
        }
    }
    threadHasEnded = true;
    changed.notify_all();
}

bool CaptureCore::hasWork() const {
    return quitting || servedTarget != targetNumber || taken || failure ||
           (phase != Phase::live && pictureCame);
}

void CaptureCore::serveTarget(Lock& lock) {
    const std::uint64_t number = targetNumber;
    dropPipeline(lock);
    if (number != targetNumber) {
        return;
    }
    servedTarget = number;
    if (target) {
        current = target->camera.facts;
        others.clear();
        startEnd = clock.now() + options.firstPicture;
        lastReopening = clock.now() + options.reappear;
        nextAttempt = clock.now();
        attempts = 0;
    }
    changed.notify_all();
}

/// Creates and starts a pipeline if the camera is listed.
void CaptureCore::attempt(Lock& lock) {
    const bool isUrgent = isStarting() || phase == Phase::live;
    nextAttempt = clock.now() + (isUrgent ? startRetry : options.retry);
    if (stuck && !stuck->hasEnded()) {
        return;
    }
    stuck.reset();
    const Target wanted = *target;
    const std::uint64_t number = targetNumber;
    const std::uint64_t newRun = ++run;
    failure.reset();
    lock.unlock();

    std::string reason;
    std::shared_ptr<CapturePipeline> made;
    const CameraMode* mode = nullptr;
    std::optional<Camera> camera;
    if (hasFreeDescriptors(safeDescriptors)) {
        camera = lookForCamera(wanted);
    } else {
        reason = tooFewDescriptors;
    }
    if (camera) {
        mode = modeFor(wanted.preset, *camera->modes);
        made = mode != nullptr ? CapturePipeline::create(*camera, *mode, events(newRun), reason)
                               : nullptr;
        reason = mode != nullptr ? reason : "its picture format is not supported";
    }

    lock.lock();
    if (number != targetNumber || run != newRun) {
        return;
    }
    if (!made) {
        if (!reason.empty()) {
            lose(lock, reason);
        } else if (phase == Phase::opening) {
            refuse(lock, deviceNotConnected(wanted.camera.facts.name));
        }
        return;
    }
    current = camera->facts;
    pictureCame = false;
    lastPicture = clock.now();
    lastPictureTime = GST_CLOCK_TIME_NONE;
    for (StillRequest& request : requests) {
        request.after = GST_CLOCK_TIME_NONE;
    }
    pipeline = std::move(made);
    pipeline->wantStills(!requests.empty());
    pipeline->wantPreview(previewWanted);
    period = mode->period();
    for (StillRequest& request : requests) {
        request.deadline = std::max(request.deadline, clock.now() + forCamera(options.still));
    }
    nextLook = clock.now() + forCamera(options.doubt);
    // Some cameras deliver nothing after one start in many, others are only slow: a short attempt
    // is followed by a long one.
    const bool isShort = ++attempts % 2 == 1;
    attemptEnd = clock.now() +
                 forCamera(isShort ? options.secondTry : options.firstPicture - options.secondTry);
    if (attempts == 1) {
        startEnd = std::max(startEnd, clock.now() + forCamera(options.firstPicture));
    }
    if (!pipeline->start()) {
        failure = "the system refuses more threads";
    }
}

std::optional<Camera> CaptureCore::lookForCamera(const Target& wanted) {
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
    others = twinsOf(found, facts);
    return std::move(cameras[found]);
}

/// Whether the open camera itself is listed. Nothing if the target has changed meanwhile.
std::optional<bool> CaptureCore::isStillListed(Lock& lock) {
    const Target wanted = *target;
    const std::uint64_t number = targetNumber;
    const std::string instance = current.instance;
    lock.unlock();
    const auto camera = lookForCamera(wanted);
    lock.lock();
    if (number != targetNumber) {
        return std::nullopt;
    }
    return camera && camera->facts.instance == instance;
}

/// Called after the first picture. If the target's camera was disconnected between listing and
/// opening, the stream may be linked to another camera. If it is still listed, it was not
/// disconnected.
void CaptureCore::confirm(Lock& lock) {
    const auto listed = isStillListed(lock);
    if (listed && *listed) {
        goLive();
    } else if (listed) {
        tryAgain(lock);
    }
}

/// Does not report the camera as lost: a virtual camera that restarts is back within moments.
void CaptureCore::tryAgain(Lock& lock) {
    dropPipeline(lock);
    nextAttempt = clock.now() + (isStarting() ? startRetry : options.retry);
}

void CaptureCore::goLive() {
    if (phase == Phase::gone) {
        report("The camera '" + target->camera.facts.name + "' is back. Capturing continues.");
    }
    phase = Phase::live;
    changed.notify_all();
}

/// Handles failures and timeouts.
void CaptureCore::watch(Lock& lock) {
    if (servedTarget != targetNumber || !target || quitting) {
        return;
    }
    const auto now = clock.now();
    if (phase == Phase::starting && now >= startEnd) {
        lose(lock, "");
    } else if (!pipeline) {
        if (phase == Phase::live && now >= reopeningEnd) {
            lose(lock, "");
        } else if (now >= nextAttempt) {
            attempt(lock);
        }
    } else if (failure) {
        const std::string reason = *failure;
        const auto listed = isStarting() ? isStillListed(lock) : true;
        if (listed && *listed) {
            lose(lock, reason);
        } else if (listed) {
            tryAgain(lock);
        }
    } else if (phase != Phase::live && pictureCame) {
        confirm(lock);
    } else if (phase != Phase::live && now >= attemptEnd) {
        tryAgain(lock);
    } else if (phase == Phase::live && isSilentAfterPause(now)) {
        // Requests wait meanwhile.
        dropPipeline(lock);
        // Some virtual cameras restart now, and are still listed for a moment.
        nextAttempt = now + options.retry;
        reopeningEnd = nextAttempt + options.reappear;
    } else if (phase == Phase::live && now >= lastPicture + forCamera(options.silence)) {
        lose(lock, "");
    } else if (now >= nextLook && now >= lastPicture + forCamera(options.doubt)) {
        nextLook = now + forCamera(options.doubt);
        const auto listed = isStillListed(lock);
        if (listed && !*listed && phase == Phase::live) {
            lose(lock, "");
        } else if (listed && !*listed) {
            tryAgain(lock);
        }
    }
}

/// Whether the camera's pictures stopped when the process was paused. PipeWire may leave a stream
/// whose process was stopped without pictures, or with one. True once for each pause.
bool CaptureCore::isSilentAfterPause(Clock::time_point now) {
    const auto pause = clock.lastPause();
    if (pause == settledPause) {
        return false;
    }
    const bool isSilent = now >= std::max(lastPicture, pause) + forCamera(options.doubt);
    if (isSilent || lastPicture >= pause + forCamera(options.doubt)) {
        settledPause = pause;
    }
    return isSilent;
}

void CaptureCore::lose(Lock& lock, const std::string& reason) {
    if (phase == Phase::opening) {
        refuse(lock, deviceCannotBeOpened(target->camera.facts.name, reason));
        return;
    }
    const std::uint64_t number = targetNumber;
    const NSError error = cameraGivesNoPictures(target->camera.facts.name, reason);
    if (phase != Phase::gone) {
        phase = Phase::gone;
        failRequests(error);
        report(error.localizedDescription);
        receiver.preview(nullptr);
        changed.notify_all();
    }
    dropPipeline(lock);
    if (number == targetNumber) {
        nextAttempt = clock.now() + options.retry;
    }
}

/// Tries again for a while, or ends the wait of `CaptureEngine::open`.
void CaptureCore::refuse(Lock& lock, NSError reason) {
    openingError = std::move(reason);
    if (clock.now() >= lastReopening) {
        phase = Phase::gone;
        changed.notify_all();
    }
    tryAgain(lock);
}

void CaptureCore::serveStill(Lock& lock) {
    GstPointer<GstSample> sample = std::move(taken);
    const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(sample.get()));
    // The request that the sample was taken for may already have its outcome.
    if (requests.empty() || !isLaterThan(requests.front().after, time)) {
        return;
    }
    const std::uint64_t number = requests.front().number;
    const auto isWanted = [&] { return !requests.empty() && requests.front().number == number; };
    lock.unlock();
    const std::shared_ptr<DecodedPicture> picture = stillPicture(sample.get());
    // Some cameras have few buffers.
    sample.reset();
    lock.lock();
    // A machine that is too slow for its stills encodes in the callbacks, which delays the next
    // requests. Here they would wait until they expire.
    if (picture && isWanted() && requests.size() == 1) {
        if (pipeline) {
            pipeline->wantStills(false);
        }
        lock.unlock();
        picture->encodeAhead();
        lock.lock();
    }
    if (!isWanted()) {
        return;
    }
    requests.pop_front();
    if (pipeline) {
        pipeline->wantStills(!requests.empty());
    }
    StillOutcome outcome{picture, std::nullopt};
    if (!outcome.picture) {
        outcome.error = pictureNotReadable(target->camera.facts.name);
    }
    receiver.still(number, std::move(outcome));
}

void CaptureCore::expireRequests() {
    const auto now = clock.now();
    while (!requests.empty() && now >= requests.front().deadline) {
        const std::uint64_t number = requests.front().number;
        requests.pop_front();
        receiver.still(
            number,
            StillOutcome{{}, noPictureInTime(target->camera.facts.name, forCamera(options.still))});
    }
}

void CaptureCore::dropPipeline(Lock& lock) {
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
    const bool stopped = dropped->stop(options.driverTimeout);
    lock.lock();
    if (!stopped) {
        stuck = dropped;
    }
}

CaptureCore::Clock::time_point CaptureCore::nextTime() {
    const auto now = clock.now();
    auto next = now + std::chrono::hours(1);
    if (target) {
        next = now + Clock::longestStep / 2;
        if (!requests.empty()) {
            next = std::min(next, requests.front().deadline);
        }
        if (phase == Phase::starting) {
            next = std::min(next, startEnd);
        }
        if (!pipeline) {
            next = std::min(next, nextAttempt);
        } else {
            next = std::min(next, std::max(nextLook, lastPicture + forCamera(options.doubt)));
            next = std::min(next, phase == Phase::live ? lastPicture + forCamera(options.silence)
                                                       : attemptEnd);
        }
    }
    return next;
}

PipelineEvents CaptureCore::events(std::uint64_t ofRun) {
    const std::weak_ptr<CaptureCore> weak = weak_from_this();
    PipelineEvents callbacks;
    callbacks.pictureArrived = [weak, ofRun](GstClockTime time) {
        if (const auto core = weak.lock()) {
            core->pictureArrived(ofRun, time);
        }
    };
    callbacks.still = [weak, ofRun](GstSample* sample) {
        if (const auto core = weak.lock()) {
            core->stillArrived(ofRun, sample);
        }
    };
    callbacks.preview = [weak, ofRun](GstSample* sample) {
        if (const auto core = weak.lock()) {
            core->previewArrived(ofRun, sample);
        }
    };
    callbacks.failed = [weak, ofRun](const std::string& reason) {
        if (const auto core = weak.lock()) {
            core->failed(ofRun, reason);
        }
    };
    return callbacks;
}

void CaptureCore::pictureArrived(std::uint64_t ofRun, GstClockTime time) {
    std::lock_guard lock(mutex);
    if (ofRun != run) {
        return;
    }
    lastPicture = clock.now();
    lastPictureTime = time;
    if (!pictureCame) {
        pictureCame = true;
        changed.notify_all();
    }
}

void CaptureCore::stillArrived(std::uint64_t ofRun, GstSample* sample) {
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

void CaptureCore::previewArrived(std::uint64_t ofRun, GstSample* sample) {
    std::lock_guard lock(mutex);
    if (ofRun == run && phase == Phase::live && previewWanted) {
        receiver.preview(sample);
    }
}

void CaptureCore::failed(std::uint64_t ofRun, const std::string& reason) {
    std::lock_guard lock(mutex);
    if (ofRun == run && !failure) {
        failure = reason;
        changed.notify_all();
    }
}

std::uint64_t CaptureCore::setTarget(std::optional<Target> newTarget, Phase newPhase) {
    target = std::move(newTarget);
    phase = newPhase;
    openingError.reset();
    changed.notify_all();
    return ++targetNumber;
}

bool CaptureCore::isOpen(const Camera& camera, AVCaptureSessionPreset preset) const {
    return target && target->camera.facts.identity == camera.facts.identity &&
           target->camera.facts.instance == camera.facts.instance &&
           modeFor(target->preset, *camera.modes) == modeFor(preset, *camera.modes);
}

bool CaptureCore::isSlowAndStarted() const {
    return pipeline && !failure && 3 * period > options.opening;
}

void CaptureCore::failRequests(const NSError& error) {
    for (const StillRequest& request : requests) {
        receiver.still(request.number, StillOutcome{{}, error});
    }
    requests.clear();
}

void CaptureCore::report(const std::string& message) const {
    if (observer != nullptr) {
        observer->cameraChanged(message);
    }
}

} // namespace vistrane
