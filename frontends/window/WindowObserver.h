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
    /// `show` gets one sentence for the user, on the main thread.
    WindowObserver(std::function<void(const std::string&)> log, QtRunLoop& loop,
                   std::function<void(const std::string& text)> show)
        : SessionObserver(std::move(log)), loop_(loop), show_(std::move(show)) {}

    LeftOutFrames& leftOut() { return leftOut_; }

    void pictureWasRefused(const std::string& moviePath, const NSError& reason) override {
        SessionObserver::pictureWasRefused(moviePath, reason);
        leftOut_.frameWasRefused(moviePath);
    }
    void movieIsWhole(const FinishedMovie& movie) override {
        if (const auto sentence = leftOut_.takeSentence(movie.path)) {
            post(*sentence);
        }
    }
    void movieFailed(const std::string& path, const NSError& reason) override {
        SessionObserver::movieFailed(path, reason);
        leftOut_.takeSentence(path);
        post(reason.localizedDescription + ".");
    }

private:
    void post(const std::string& text) {
        loop_.mainQueue().async([this, text] { show_(text); });
    }

    QtRunLoop& loop_;
    const std::function<void(const std::string& text)> show_;
    LeftOutFrames leftOut_;
};

} // namespace vistrane
