#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backends/cameras/CameraObserver.h"
#include "backends/cameras/Cameras.h"
#include "backends/pictures/PictureData.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/dispatch/Dispatch.h"
#include "tests/support/process_facts.h"

namespace vistrane {

/// A main queue that the test drains on its own thread.
class HandDrainedDispatch final : public Dispatch {
public:
    DispatchQueue& dispatch_get_global_queue(std::intptr_t, std::uintptr_t) override {
        return queue_;
    }
    DispatchQueue& dispatch_get_main_queue() override { return queue_; }

    /// Drains until `condition` holds; false after a minute.
    bool runUntil(const std::function<bool()>& condition) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            std::function<void()> work;
            {
                std::unique_lock lock(queue_.mutex);
                if (!queue_.changed.wait_until(lock, limit,
                                               [this] { return !queue_.items.empty(); })) {
                    return false;
                }
                work = std::move(queue_.items.front());
                queue_.items.pop_front();
            }
            if (work) {
                work();
            }
        }
        return true;
    }

    /// Makes `runUntil` check its condition again. Any thread.
    void wake() { queue_.async(nullptr); }

    std::size_t length() {
        std::lock_guard lock(queue_.mutex);
        return queue_.items.size();
    }

    /// Waits, without draining, until that many items are there.
    bool waitForLength(std::size_t length) {
        std::unique_lock lock(queue_.mutex);
        return queue_.changed.wait_for(lock, std::chrono::seconds(60),
                                       [&] { return queue_.items.size() >= length; });
    }

private:
    struct Queue final : DispatchQueue {
        void async(std::function<void()> work) override {
            std::lock_guard lock(mutex);
            items.push_back(std::move(work));
            changed.notify_all();
        }
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<std::function<void()>> items;
    };
    Queue queue_;
};

class RecordingObserver final : public CameraObserver {
public:
    explicit RecordingObserver(HandDrainedDispatch& dispatch) : dispatch_(dispatch) {}

    void cameraChanged(const std::string& message) override {
        {
            std::lock_guard lock(mutex_);
            messages_.push_back(message);
        }
        dispatch_.wake();
    }

    std::vector<std::string> messages() const {
        std::lock_guard lock(mutex_);
        return messages_;
    }

private:
    HandDrainedDispatch& dispatch_;
    mutable std::mutex mutex_;
    std::vector<std::string> messages_;
};

/// The pixels of a still.
struct Pixmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;

    /// The three bytes of the pixel in the middle.
    std::vector<int> middle() const {
        const std::size_t at = 3 * (static_cast<std::size_t>(height / 2) * width + width / 2);
        return {rgb[at], rgb[at + 1], rgb[at + 2]};
    }
};

inline std::optional<Pixmap> pixmapOf(const NSData& data) {
    const auto* still = dynamic_cast<const PictureData*>(&data);
    if (still == nullptr) {
        return std::nullopt;
    }
    const PictureShape& shape = still->picture()->shape();
    Pixmap pixmap{static_cast<int>(shape.width), static_cast<int>(shape.height), {}};
    pixmap.rgb.resize(std::size_t{3} * shape.width * shape.height);
    if (still->picture()->readPixels(PixelForm::RGB, pixmap.rgb.data(),
                                     std::ptrdiff_t{3} * shape.width)) {
        return std::nullopt;
    }
    return pixmap;
}

/// Collects the outcomes of stills. The order of those of several is kept in `order` if it is set.
class RecordingDelegate final : public AVCapturePhotoCaptureDelegate {
public:
    void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput&, const AVCapturePhoto* photo,
                                               const std::optional<NSError>& error) override {
        outcomes.push_back(error ? error->localizedDescription : "");
        if (order != nullptr) {
            order->push_back(this);
        }
        if (photo != nullptr) {
            files.push_back(photo->fileDataRepresentation());
        }
    }

    /// For each outcome the error's text, empty for a picture.
    std::vector<std::string> outcomes;
    std::vector<std::shared_ptr<NSData>> files;
    std::vector<const RecordingDelegate*>* order = nullptr;
};

/// Cameras with a session and an output, set up as in the program.
struct CameraTestBed {
    HandDrainedDispatch dispatch;
    RecordingObserver observer{dispatch};
    std::unique_ptr<Cameras> cameras;
    std::shared_ptr<AVCaptureSession> session;
    std::shared_ptr<AVCapturePhotoOutput> output;
    std::shared_ptr<AVCapturePhotoSettings> settings;
    RecordingDelegate delegate;
    std::map<std::string, std::shared_ptr<AVCaptureDevice>> listed;

    explicit CameraTestBed(CameraOptions options)
        : cameras(std::make_unique<Cameras>(dispatch, observer, options)),
          session(cameras->captureSession()), output(cameras->photoOutput()),
          settings(cameras->photoSettings()) {
        session->setSessionPreset(AVCaptureSessionPresetPhoto);
        session->addOutput(output);
    }

    std::vector<std::shared_ptr<AVCaptureDevice>> devices() {
        return cameras
            ->discoverySessionWithDeviceTypes({AVCaptureDeviceTypeBuiltInWideAngleCamera,
                                               AVCaptureDeviceTypeExternalUnknown, std::nullopt},
                                              AVMediaTypeVideo, AVCaptureDevicePositionUnspecified)
            ->devices();
    }

    std::shared_ptr<AVCaptureDevice> device(const std::string& name) {
        for (const auto& candidate : devices()) {
            if (candidate->localizedName() == name) {
                return candidate;
            }
        }
        return nullptr;
    }

    /// Picks a camera as in a list that was made once. Returns whether it runs.
    bool pick(const std::string& name) {
        auto& picked = listed[name];
        picked = picked ? picked : device(name);
        session->stopRunning();
        for (const auto& input : session->inputs()) {
            session->removeInput(*input);
        }
        const auto result = cameras->deviceInputWithDevice(picked);
        if (!result.input) {
            return false;
        }
        session->addInput(result.input);
        session->startRunning();
        return session->isRunning();
    }

    void request() {
        output->capturePhotoWithSettings(cameras->photoSettingsFromPhotoSettings(*settings),
                                         delegate);
    }

    /// Requests a still and returns its outcome: the error's text, empty for a picture.
    std::string still() {
        const std::size_t count = delegate.outcomes.size() + 1;
        request();
        return awaitOutcomes(count) ? delegate.outcomes.back() : "no outcome";
    }

    /// Drains until there are `count` outcomes in all.
    bool awaitOutcomes(std::size_t count) {
        return dispatch.runUntil([&] { return delegate.outcomes.size() >= count; });
    }
};

} // namespace vistrane
