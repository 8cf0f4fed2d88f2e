#pragma once

#include <atomic>
#include <string>

#include "backends/posix/MediaObserver.h"
#include "frontends/window/WindowLog.h"

namespace vistrane {

/// Writes into the log what the media report.
class WindowObserver final : public MediaObserver {
public:
    explicit WindowObserver(WindowLog& log) : log_(log) {}

    void imageCouldNotBeRead(const std::string&, const NSError& reason) override {
        log_.write(reason.localizedDescription);
    }
    void fileIsBeingWritten(const std::string&) override { isWritingFile_ = true; }
    void fileWasWritten(const std::string&) override { isWritingFile_ = false; }
    void fileCouldNotBeWritten(const std::string&, const NSError& reason) override {
        isWritingFile_ = false;
        log_.write("A frame is lost: " + reason.localizedDescription);
    }
    void pictureWasRefused(const NSError& reason) override {
        log_.write(reason.localizedDescription);
    }
    void movieFailed(const std::string&, const NSError& reason) override {
        log_.write(reason.localizedDescription);
    }
    void cameraChanged(const std::string& message) override { log_.write(message); }

    /// Whether a frame's file is not whole yet.
    bool isWritingFile() const { return isWritingFile_; }

private:
    WindowLog& log_;
    std::atomic<bool> isWritingFile_{false};
};

} // namespace vistrane
