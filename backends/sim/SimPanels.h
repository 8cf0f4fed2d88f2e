#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/appkit/NSAlert.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/foundation/NSError.h"

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
    NSModalResponse answer = NSAlertFirstButtonReturn;
};

/// The alerts and how they are answered. Any thread.
class SimAlerts {
public:
    SimAlerts(CallLog& log, SimLoop& loop, SimThreads& threads)
        : log_(log), loop_(loop), threads_(threads) {}
    SimAlerts(const SimAlerts&) = delete;
    SimAlerts& operator=(const SimAlerts&) = delete;

    std::unique_ptr<NSAlert> make();
    std::unique_ptr<NSAlert> makeForError(const NSError& error);

    /// Answers the next alert that has no answer yet; without, the first button is pressed.
    void answer(NSModalResponse response);
    /// How long every alert stays up, in seconds; at first no time at all. The main loop goes on
    /// meanwhile, without timers when the alert is the main thread's. Not with real threads.
    void stayUp(double seconds) { seconds_ = seconds; }
    /// Called with each alert while it is up, on its thread.
    void whileUp(std::function<void(const SimShownAlert&)> action) { action_ = std::move(action); }

    std::vector<SimShownAlert> shown() const;
    std::vector<SimShownAlert> takeShown();

private:
    friend class SimAlert;
    NSModalResponse run(SimShownAlert alert);

    CallLog& log_;
    SimLoop& loop_;
    SimThreads& threads_;
    mutable std::mutex mutex_;
    std::deque<NSModalResponse> answers_;
    std::vector<SimShownAlert> shown_;
    double seconds_ = 0.0;
    std::function<void(const SimShownAlert&)> action_;
};

/// The open panels and what the user does with them. Main thread only.
class SimOpenPanels {
public:
    SimOpenPanels(CallLog& log, SimLoop& loop) : log_(log), loop_(loop) {}
    SimOpenPanels(const SimOpenPanels&) = delete;
    SimOpenPanels& operator=(const SimOpenPanels&) = delete;

    std::unique_ptr<NSOpenPanel> make();

    /// The outcome of the next panel that has none yet; without, the user cancels.
    void choose(const std::string& path);
    void confirmWith(std::optional<NSURL> url);
    void cancel();
    void stayUp(double seconds) { seconds_ = seconds; }
    void whileUp(std::function<void()> action) { action_ = std::move(action); }

private:
    friend class SimOpenPanel;
    struct Outcome {
        NSModalResponse response = NSModalResponseCancel;
        std::optional<NSURL> url;
    };
    Outcome run();

    CallLog& log_;
    SimLoop& loop_;
    std::deque<Outcome> outcomes_;
    double seconds_ = 0.0;
    std::function<void()> action_;
};

} // namespace vistrane
