#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <utility>

#include "backends/cameras/CameraObserver.h"
#include "backends/movies/MovieObserver.h"
#include "backends/pictures/PictureObserver.h"

namespace vistrane {

/// Writes the reports of cameras, pictures and movies to the front end's log. A front end that
/// needs more overrides the methods.
class SessionObserver : public PictureObserver, public MovieObserver, public CameraObserver {
public:
    /// `log` gets one message without a newline, on any thread, and must return immediately.
    explicit SessionObserver(std::function<void(const std::string&)> log) : log_(std::move(log)) {}
    virtual ~SessionObserver() = default;

    void imageCouldNotBeRead(const std::string&, const NSError& reason) override {
        log_(reason.localizedDescription);
    }
    void imageHasFlaw(const NSError& flaw) override { log_(flaw.localizedDescription); }
    void fileIsBeingWritten(const std::string&) override { isWritingFile_ = true; }
    void fileWasWritten(const std::string&) override { isWritingFile_ = false; }
    void fileCouldNotBeWritten(const std::string&, const NSError& reason) override {
        isWritingFile_ = false;
        logLostFrame(reason);
    }
    void pictureWasRefused(const std::string&, const NSError& reason) override {
        log_(reason.localizedDescription);
    }
    void movieFailed(const std::string&, const NSError& reason) override {
        log_(reason.localizedDescription);
    }
    void cameraChanged(const std::string& message) override { log_(message); }
    void stillIsBeingHandled() override { isHandlingStill_ = true; }
    void stillWasHandled() override { isHandlingStill_ = false; }

    /// Whether a frame is still being encoded or written. Any thread.
    bool isSavingFrame() const { return isHandlingStill_ || isWritingFile_; }

protected:
    void logLostFrame(const NSError& reason) {
        log_("A frame is lost: " + reason.localizedDescription);
    }

private:
    const std::function<void(const std::string&)> log_;
    std::atomic<bool> isHandlingStill_{false};
    std::atomic<bool> isWritingFile_{false};
};

} // namespace vistrane
