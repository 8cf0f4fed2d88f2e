#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/appkit/AppKit.h"

namespace vistrane {

class SimLoop;
class SimThreads;

/// An alert as it stood on the screen.
struct SimShownAlert {
    std::string message;
    std::string informativeText;
    std::vector<std::string> buttons;
    bool transparentTitleBar = false;
    std::shared_ptr<NSView> accessoryView;
    bool onMainThread = true;
    /// Of a standard alert for an error.
    std::optional<NSError> error;
};

/// The AppKit's alerts and open panels, and what the user does with them. Alerts: any thread.
class SimAlerts : public virtual AppKit {
public:
    SimAlerts(CallLog& log, SimLoop& loop, SimThreads& threads)
        : log_(log), loop_(loop), threads_(threads) {}

    std::unique_ptr<NSAlert> alert() override;
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) override;
    std::unique_ptr<NSOpenPanel> openPanel() override;

    /// Answers the next alert that has no answer yet. Without an answer the first button is
    /// pressed.
    void answer(NSModalResponse response) {
        const std::lock_guard lock(mutex_);
        answers_.push_back(response);
    }
    /// The user confirms the next open panel, with that choice. Without any the user cancels.
    void confirmWith(std::optional<NSURL> url) { choices_.push_back(std::move(url)); }
    void choose(const std::string& path) { confirmWith(NSURL::fileURLWithPath(path)); }
    /// How long every alert and panel stays up, in seconds; 0 at first. The main loop goes on
    /// meanwhile, without timers when it is the main thread's. Not with real threads.
    void stayUp(double seconds) { seconds_ = seconds; }
    /// Called with each alert while it is up, on its thread.
    void whileUp(std::function<void(const SimShownAlert&)> action) { action_ = std::move(action); }

    std::vector<SimShownAlert> shown() const {
        const std::lock_guard lock(mutex_);
        return shown_;
    }
    /// Returns the alerts so far and forgets them.
    std::vector<SimShownAlert> takeShown() {
        const std::lock_guard lock(mutex_);
        return std::exchange(shown_, {});
    }

private:
    friend class SimAlert;
    friend class SimOpenPanel;
    NSModalResponse run(const SimShownAlert& alert);

    CallLog& log_;
    SimLoop& loop_;
    SimThreads& threads_;
    mutable std::mutex mutex_;
    std::deque<NSModalResponse> answers_;
    std::vector<SimShownAlert> shown_;
    std::deque<std::optional<NSURL>> choices_;
    double seconds_ = 0.0;
    std::function<void(const SimShownAlert&)> action_ = [](const SimShownAlert&) {};
};

} // namespace vistrane
