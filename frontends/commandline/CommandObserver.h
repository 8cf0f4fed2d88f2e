#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "backends/qt/loop/QtRunLoop.h"
#include "frontends/SessionObserver.h"
#include "frontends/commandline/CompileReport.h"

namespace vistrane {

/// The result of a compile: a complete movie, or the reason why there is none.
struct MovieOutcome {
    FinishedMovie movie;
    std::optional<NSError> error;
};

/// Passes the reports of cameras, pictures and movies to the running command, and keeps the compile
/// report.
class CommandObserver final : public SessionObserver {
public:
    CommandObserver(std::function<void(const std::string&)> log, QtRunLoop& loop,
                    CompileReport& report)
        : SessionObserver(std::move(log)), loop_(loop), report_(report) {}

    // ---- Main thread ---------------------------------------------------------------------------
    std::function<void(const std::string& path)> frameWasSaved;
    std::function<void()> frameCouldNotBeSaved;
    /// Stills that were requested and have no outcome yet.
    int openStills = 0;
    void stillWasRequested() override { ++openStills; }
    void stillWasHandled() override {
        SessionObserver::stillWasHandled();
        --openStills;
    }
    /// Set when a compile has ended.
    std::optional<MovieOutcome> movieOutcome;

    // ---- Any thread ----------------------------------------------------------------------------
    void imageCouldNotBeRead(const std::string& path, const NSError& reason) override;
    void fileWasWritten(const std::string& path) override;
    void fileCouldNotBeWritten(const std::string& path, const NSError& reason) override;
    void pictureWasAppended() override { report_.frameWasAppended(); }
    void pictureWasRefused(const std::string&, const NSError& reason) override {
        report_.frameWasRefused(reason);
    }
    void movieIsWhole(const FinishedMovie& movie) override { setOutcome({movie, std::nullopt}); }
    void movieFailed(const std::string&, const NSError& reason) override {
        MovieOutcome outcome;
        outcome.error = reason;
        setOutcome(std::move(outcome));
    }

private:
    void stillIsLost();
    void setOutcome(MovieOutcome outcome);

    QtRunLoop& loop_;
    CompileReport& report_;
};

} // namespace vistrane
