#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backends/cameras/Cameras.h"
#include "backends/posix/MediaObserver.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/dispatch/Dispatch.h"

namespace vistrane {

/// A main queue that the test drains on its own thread.
class HandDrainedDispatch final : public Dispatch {
public:
    DispatchQueue& dispatch_get_global_queue(std::intptr_t, std::uintptr_t) override {
        return queue_;
    }
    DispatchQueue& dispatch_get_main_queue() override { return queue_; }

    /// Drains until `condition` holds; false when that takes longer than any machine needs.
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

    /// Has `runUntil` look at its condition again. Any thread.
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

class RecordingObserver final : public MediaObserver {
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

/// A PPM file taken apart.
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
    Pixmap pixmap;
    int headerLength = 0;
    const std::string head(reinterpret_cast<const char*>(data.bytes()),
                           std::min<std::size_t>(data.length(), 32));
    if (std::sscanf(head.c_str(), "P6\n%d %d\n255\n%n", &pixmap.width, &pixmap.height,
                    &headerLength) != 2) {
        return std::nullopt;
    }
    // The last white space of the pattern also passes over pixels that look like white space.
    const std::string header =
        "P6\n" + std::to_string(pixmap.width) + " " + std::to_string(pixmap.height) + "\n255\n";
    const std::size_t pixels = std::size_t{3} * static_cast<std::size_t>(pixmap.width) *
                               static_cast<std::size_t>(pixmap.height);
    if (head.compare(0, header.size(), header) != 0 || data.length() != header.size() + pixels) {
        return std::nullopt;
    }
    pixmap.rgb.assign(data.bytes() + header.size(), data.bytes() + data.length());
    return pixmap;
}

/// Collects the outcomes of stills.
class RecordingDelegate final : public AVCapturePhotoCaptureDelegate {
public:
    void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput&, const AVCapturePhoto* photo,
                                               const std::optional<NSError>& error) override {
        outcomes.push_back(error ? error->localizedDescription : "");
        if (photo != nullptr) {
            files.push_back(photo->fileDataRepresentation());
        }
    }

    /// One for each outcome: the error's text, empty for a picture.
    std::vector<std::string> outcomes;
    std::vector<std::shared_ptr<NSData>> files;
};

/// Cameras with a session and an output, as the program sets them up.
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

    /// As picking it in a list that was made once. Whether it runs.
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

    /// Drains until `count` stills have an outcome in all.
    bool awaitOutcomes(std::size_t count) {
        return dispatch.runUntil([&] { return delegate.outcomes.size() >= count; });
    }
};

} // namespace vistrane
