#pragma once

#include <functional>
#include <string>
#include <utility>

#include "backends/qt/loop/QtRunLoop.h"
#include "frontends/SessionObserver.h"
#include "frontends/window/CaptureReport.h"
#include "frontends/window/LeftOutFrames.h"

namespace vistrane {

/// Writes what the media report into the log, counts the stills of the capture, and shows in the
/// window what became of a movie and of the camera.
class WindowObserver final : public SessionObserver {
public:
    /// What the window tells its user. Called on the main thread.
    struct Reports {
        /// One sentence that says what failed.
        std::function<void(const std::string& text)> failure;
        /// A movie is complete. `leftOut` says which frames are not in it; empty if all are.
        std::function<void(const std::string& path, const std::string& leftOut)> movie;
        /// The current camera gives no pictures, or gives them again.
        std::function<void(const std::string& message)> camera;
        /// A still has come, and is not counted yet.
        std::function<void()> still;
        std::function<void()> savedFrame;
    };

    WindowObserver(std::function<void(const std::string&)> log, QtRunLoop& loop, Reports reports)
        : SessionObserver(std::move(log)), loop_(loop), reports_(std::move(reports)) {}

    LeftOutFrames& leftOut() { return leftOut_; }
    /// Main thread.
    CaptureReport& capture() { return capture_; }

    void cameraChanged(const std::string& message) override {
        SessionObserver::cameraChanged(message);
        loop_.mainQueue().async([this, message] { reports_.camera(message); });
    }
    void stillIsBeingHandled() override {
        SessionObserver::stillIsBeingHandled();
        reports_.still();
        capture_.stillIsBeingHandled();
    }
    void stillWasHandled() override {
        SessionObserver::stillWasHandled();
        capture_.stillWasHandled();
    }

    void pictureWasRefused(const std::string& moviePath, const NSError& reason) override {
        SessionObserver::pictureWasRefused(moviePath, reason);
        leftOut_.frameWasRefused(moviePath);
    }
    void movieIsWhole(const FinishedMovie& movie) override {
        const std::string leftOut = leftOut_.takeSentence(movie.path).value_or("");
        loop_.mainQueue().async(
            [this, path = movie.path, leftOut] { reports_.movie(path, leftOut); });
    }
    // The program writes frames only, on the main thread.
    void fileWasWritten(const std::string& path) override {
        SessionObserver::fileWasWritten(path);
        capture_.fileWasWritten();
        loop_.mainQueue().async([this] { reports_.savedFrame(); });
    }
    void fileCouldNotBeWritten(const std::string& path, const NSError& reason) override {
        SessionObserver::fileCouldNotBeWritten(path, reason);
        capture_.fileCouldNotBeWritten(reason);
    }
    void movieFailed(const std::string& path, const NSError& reason) override {
        SessionObserver::movieFailed(path, reason);
        leftOut_.takeSentence(path);
        loop_.mainQueue().async(
            [this, text = reason.localizedDescription + "."] { reports_.failure(text); });
    }

private:
    QtRunLoop& loop_;
    const Reports reports_;
    LeftOutFrames leftOut_;
    CaptureReport capture_;
};

} // namespace vistrane
