#pragma once

#include <functional>
#include <string>
#include <utility>

#include "backends/qt/loop/QtRunLoop.h"
#include "frontends/SessionObserver.h"
#include "frontends/window/LeftOutFrames.h"

namespace vistrane {

/// Writes what the media report into the log, and shows in the window what became of a movie.
class WindowObserver final : public SessionObserver {
public:
    /// What the window tells its user. Called on the main thread.
    struct Reports {
        /// One sentence that says what failed.
        std::function<void(const std::string& text)> failure;
        /// A movie is complete. `leftOut` says which frames are not in it; empty if all are.
        std::function<void(const std::string& path, const std::string& leftOut)> movie;
        std::function<void()> savedFrame;
    };

    WindowObserver(std::function<void(const std::string&)> log, QtRunLoop& loop, Reports reports)
        : SessionObserver(std::move(log)), loop_(loop), reports_(std::move(reports)) {}

    LeftOutFrames& leftOut() { return leftOut_; }

    void pictureWasRefused(const std::string& moviePath, const NSError& reason) override {
        SessionObserver::pictureWasRefused(moviePath, reason);
        leftOut_.frameWasRefused(moviePath);
    }
    void movieIsWhole(const FinishedMovie& movie) override {
        const std::string leftOut = leftOut_.takeSentence(movie.path).value_or("");
        loop_.mainQueue().async(
            [this, path = movie.path, leftOut] { reports_.movie(path, leftOut); });
    }
    void fileWasWritten(const std::string& path) override {
        SessionObserver::fileWasWritten(path);
        loop_.mainQueue().async([this] { reports_.savedFrame(); });
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
};

} // namespace vistrane
