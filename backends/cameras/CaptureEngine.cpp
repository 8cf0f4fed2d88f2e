#include "backends/cameras/CaptureEngine.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "backends/cameras/CaptureCore.h"
#include "backends/cameras/camera_errors.h"
#include "backends/posix/threads.h"

namespace vistrane {

CaptureEngine::CaptureEngine(std::shared_ptr<CameraList> list, CameraObserver& observer,
                             CameraOptions options, Receiver receiver)
    : core_(
          std::make_shared<CaptureCore>(std::move(list), observer, options, std::move(receiver))) {
    thread_ = startThread([core = core_] { core->work(); });
    // Without a thread, every still fails as if the camera were not running.
    core_->threadHasEnded = !thread_.joinable();
}

CaptureEngine::~CaptureEngine() {
    std::unique_lock lock(core_->mutex);
    core_->setTarget(std::nullopt, CaptureCore::Phase::idle);
    core_->failRequests(sessionWasStopped());
    core_->quitting = true;
    core_->observer = nullptr;
    core_->changed.notify_all();
    const bool ended = core_->changed.wait_for(lock, core_->options.driverTimeout,
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

std::optional<NSError> CaptureEngine::open(const Camera& camera, AVCaptureSessionPreset preset) {
    std::unique_lock lock(core_->mutex);
    if (core_->threadHasEnded) {
        return deviceCannotBeOpened(camera.facts.name, "the system refuses more threads");
    }
    core_->setTarget(CaptureCore::Target{camera, preset}, CaptureCore::Phase::opening);
    const auto& phase = core_->phase;
    CaptureCore::Clock clock;
    const auto end = clock.now() + core_->options.opening;
    while (phase == CaptureCore::Phase::opening && !core_->threadHasEnded && clock.now() < end) {
        core_->changed.wait_for(lock, std::min<CaptureCore::Clock::duration>(
                                          end - clock.now(), CaptureCore::Clock::longestStep / 2));
    }
    if (phase == CaptureCore::Phase::opening && core_->isSlowAndStarted()) {
        core_->phase = CaptureCore::Phase::starting;
    }
    if (phase == CaptureCore::Phase::live || phase == CaptureCore::Phase::starting) {
        return std::nullopt;
    }
    NSError error =
        core_->openingError.value_or(noFirstPicture(camera.facts.name, core_->options.opening));
    core_->setTarget(std::nullopt, CaptureCore::Phase::idle);
    return error;
}

void CaptureEngine::start(Camera camera, AVCaptureSessionPreset preset) {
    std::unique_lock lock(core_->mutex);
    if (core_->isOpen(camera, preset)) {
        return;
    }
    const std::uint64_t number = core_->setTarget(CaptureCore::Target{std::move(camera), preset},
                                                  CaptureCore::Phase::starting);
    core_->changed.wait_for(lock, core_->options.driverTimeout, [this, number] {
        return core_->servedTarget == number && core_->phase != CaptureCore::Phase::starting;
    });
}

void CaptureEngine::stop() {
    std::unique_lock lock(core_->mutex);
    const std::uint64_t number = core_->setTarget(std::nullopt, CaptureCore::Phase::idle);
    core_->failRequests(sessionWasStopped());
    core_->changed.wait_for(lock, core_->options.driverTimeout,
                            [this, number] { return core_->servedTarget == number; });
    core_->receiver.preview(nullptr);
}

bool CaptureEngine::isRunning() const {
    std::lock_guard lock(core_->mutex);
    return core_->target.has_value() && !core_->threadHasEnded;
}

void CaptureEngine::requestStill(std::uint64_t request) {
    std::lock_guard lock(core_->mutex);
    if (!core_->target || core_->threadHasEnded) {
        core_->receiver.still(request, StillOutcome{{}, sessionNotRunning()});
        return;
    }
    if (core_->phase == CaptureCore::Phase::gone) {
        core_->receiver.still(
            request, StillOutcome{{}, cameraGivesNoPictures(core_->target->camera.facts.name, "")});
        return;
    }
    core_->requests.push_back(CaptureCore::StillRequest{
        request, core_->clock.now() + core_->forCamera(core_->options.still),
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

} // namespace vistrane
