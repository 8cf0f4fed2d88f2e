#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>

#include "backends/console/ConsoleOutput.h"
#include "backends/console/ConsoleRunLoop.h"
#include "backends/posix/MediaObserver.h"
#include "frontends/commandline/CompileReport.h"

namespace vistrane {

/// How a movie ended: whole, or the reason why there is none.
struct MovieOutcome {
    std::string path;
    std::optional<NSError> error;
};

/// Tells the command line what the media report, on the main thread, and the user what went wrong.
class SessionObserver final : public MediaObserver {
public:
    SessionObserver(ConsoleOutput& output, ConsoleRunLoop& loop, CompileReport& report)
        : output_(output), loop_(loop), report_(report) {}

    // ---- Main thread ---------------------------------------------------------------------------
    std::function<void(const std::string& path)> frameWasSaved;
    std::function<void()> frameCouldNotBeSaved;
    std::optional<MovieOutcome> movieOutcome;

    // ---- Any thread ----------------------------------------------------------------------------
    void imageCouldNotBeRead(const std::string& path, const NSError& reason) override;
    void fileIsBeingWritten(const std::string&) override { isWritingFile_ = true; }
    void fileWasWritten(const std::string& path) override;
    void fileCouldNotBeWritten(const std::string& path, const NSError& reason) override;
    void pictureWasAppended() override { report_.frameWasAppended(); }
    void pictureWasRefused(const NSError& reason) override { report_.frameWasRefused(reason); }
    void movieIsWhole(const std::string& path) override;
    void movieFailed(const std::string& path, const NSError& reason) override;
    void cameraChanged(const std::string& message) override { output_.writeLine(message); }

    /// Whether a frame's file is not whole yet.
    bool isWritingFile() const { return isWritingFile_; }

private:
    void stillIsLost(const NSError& reason);
    void setOutcome(MovieOutcome outcome);

    ConsoleOutput& output_;
    ConsoleRunLoop& loop_;
    CompileReport& report_;
    std::atomic<bool> isWritingFile_{false};
};

} // namespace vistrane
