#pragma once

#include <functional>
#include <string>
#include <utility>

#include "backends/qt/loop/QtRunLoop.h"
#include "frontends/CompileReport.h"
#include "frontends/SessionObserver.h"

namespace vistrane {

/// Writes what the media report into the log, and shows in the window what became of a movie.
class WindowObserver final : public SessionObserver {
public:
    /// `show` gets one sentence for the user, on the main thread.
    WindowObserver(std::function<void(const std::string&)> log, QtRunLoop& loop,
                   std::function<void(const std::string& text)> show)
        : SessionObserver(std::move(log)), loop_(loop), show_(std::move(show)) {}

    /// Of the movie that is being made.
    CompileReport& report() { return report_; }

    void imageCouldNotBeRead(const std::string& path, const NSError& reason) override {
        SessionObserver::imageCouldNotBeRead(path, reason);
        if (!loop_.isMainThread()) {
            report_.frameCouldNotBeRead(reason);
        }
    }
    void pictureWasAppended() override { report_.frameWasAppended(); }
    void pictureWasRefused(const NSError& reason) override {
        SessionObserver::pictureWasRefused(reason);
        report_.frameWasRefused(reason);
    }
    void movieIsWhole(const std::string&) override {
        if (const auto sentence = report_.sentence()) {
            post(*sentence);
        }
        report_.clear();
    }
    void movieFailed(const std::string& path, const NSError& reason) override {
        SessionObserver::movieFailed(path, reason);
        post(reason.localizedDescription + ".");
        report_.clear();
    }

private:
    void post(const std::string& text) {
        loop_.mainQueue().async([this, text] { show_(text); });
    }

    QtRunLoop& loop_;
    const std::function<void(const std::string& text)> show_;
    CompileReport report_;
};

} // namespace vistrane
