#include "backends/sim/SimAlerts.h"

#include <utility>

#include "backends/sim/SimControls.h"
#include "backends/sim/SimLoop.h"
#include "backends/sim/SimThreads.h"

namespace vistrane {

class SimAlert final : public SimOf<NSAlert> {
public:
    SimAlert(CallLog& log, SimAlerts& alerts, const std::string& name)
        : SimOf(log, name), alerts_(alerts), window_(log, name + ".window") {}

    void setMessageText(const std::string& text) override {
        set("setMessageText:", shown.message, text);
    }
    void setInformativeText(const std::string& text) override {
        set("setInformativeText:", shown.informativeText, text);
    }
    void addButtonWithTitle(const std::string& title) override {
        call("addButtonWithTitle: %", title);
        shown.buttons.push_back(title);
    }
    void setAccessoryView(std::shared_ptr<NSView> view) override {
        set("setAccessoryView:", shown.accessoryView, view);
    }
    NSWindow& window() override { return window_; }
    NSModalResponse runModal() override {
        call("runModal");
        shown.transparentTitleBar = window_.titlebarAppearsTransparent;
        shown.onMainThread = SimRole::isMain();
        return alerts_.run(shown);
    }

    SimShownAlert shown;

private:
    SimAlerts& alerts_;
    SimWindow window_;
};

std::unique_ptr<NSAlert> SimAlerts::alert() {
    return std::make_unique<SimAlert>(log_, *this, log_.nextName("alert"));
}

std::unique_ptr<NSAlert> SimAlerts::alertWithError(const NSError& error) {
    auto alert = std::make_unique<SimAlert>(log_, *this, log_.nextName("alert"));
    log_.recordOnMain("alertWithError: % -> %", error.localizedDescription, alert->name());
    alert->shown.message = error.localizedDescription;
    alert->shown.error = error;
    return alert;
}

NSModalResponse SimAlerts::run(const SimShownAlert& alert) {
    std::unique_lock lock(mutex_);
    const NSModalResponse answer = answers_.empty() ? NSAlertFirstButtonReturn : answers_.front();
    answers_.erase(answers_.begin(), answers_.begin() + (answers_.empty() ? 0 : 1));
    shown_.push_back(alert);
    const std::size_t number = shown_.size();
    lock.unlock();
    const std::shared_ptr<SimThread> thread = SimRole::thread();
    if (thread && number > 1000) { // It would go on for ever.
        log_.misuse(thread->name() + " shows alerts without end");
        thread->cancelQuietly();
    }
    if (alert.onMainThread) {
        loop_.runModal(seconds_, [&] { action_(alert); });
    } else {
        action_(alert);
        if (!threads_.areReal()) {
            loop_.advance(seconds_);
        }
    }
    return answer;
}

class SimOpenPanel final : public SimOf<NSOpenPanel> {
public:
    SimOpenPanel(CallLog& log, SimAlerts& panels) : SimOf(log, "openPanel"), panels_(panels) {}

    void setTitle(const std::string& title) override { mainCall("setTitle: %", title); }
    void setCanChooseDirectories(bool allowed) override {
        mainCall("setCanChooseDirectories: %", allowed);
    }
    void setCanCreateDirectories(bool allowed) override {
        mainCall("setCanCreateDirectories: %", allowed);
    }
    void setAllowsMultipleSelection(bool allowed) override {
        mainCall("setAllowsMultipleSelection: %", allowed);
    }
    void setCanChooseFiles(bool allowed) override { mainCall("setCanChooseFiles: %", allowed); }
    void setPrompt(const std::string& prompt) override { mainCall("setPrompt: %", prompt); }

    NSModalResponse runModal() override {
        mainCall("runModal");
        panels_.loop_.runModal(panels_.seconds_, {});
        if (panels_.choices_.empty()) {
            return NSModalResponseCancel;
        }
        choice_ = std::move(panels_.choices_.front());
        panels_.choices_.pop_front();
        return NSModalResponseOK;
    }
    std::optional<NSURL> URL() const override { return choice_; }

private:
    SimAlerts& panels_;
    std::optional<NSURL> choice_;
};

std::unique_ptr<NSOpenPanel> SimAlerts::openPanel() {
    return std::make_unique<SimOpenPanel>(log_, *this);
}

} // namespace vistrane
