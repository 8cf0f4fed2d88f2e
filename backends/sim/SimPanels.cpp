#include "backends/sim/SimPanels.h"

#include <utility>

#include "backends/sim/SimControls.h"
#include "backends/sim/SimLoop.h"
#include "backends/sim/SimRole.h"
#include "backends/sim/SimThreads.h"

namespace vistrane {

namespace {

/// A thread that shows more alerts than this is stopped: it would go on for ever.
constexpr std::size_t mostAlerts = 1000;

} // namespace

class SimAlert final : public NSAlert, public SimObject {
public:
    SimAlert(CallLog& log, SimAlerts& alerts, const std::string& name, std::optional<NSError> error)
        : SimObject(log, name), alerts_(alerts), window_(log, name + ".window") {
        if (error) {
            alert_.message = error->localizedDescription;
            alert_.error = std::move(error);
        }
    }

    void setMessageText(const std::string& text) override {
        call("setMessageText: " + text);
        alert_.message = text;
    }

    void setInformativeText(const std::string& text) override {
        call("setInformativeText: " + text);
        alert_.informativeText = text;
    }

    void addButtonWithTitle(const std::string& title) override {
        call("addButtonWithTitle: " + title);
        alert_.buttons.push_back(title);
    }

    void setAccessoryView(std::shared_ptr<NSView> view) override {
        call("setAccessoryView: " + nameOf(view.get()));
        alert_.accessoryView = std::move(view);
    }

    NSWindow& window() override { return window_; }

    NSModalResponse runModal() override {
        call("runModal");
        alert_.transparentTitleBar = window_.titlebarAppearsTransparent;
        alert_.onMainThread = SimRole::isMain();
        return alerts_.run(alert_);
    }

private:
    SimAlerts& alerts_;
    SimWindow window_;
    SimShownAlert alert_;
};

std::unique_ptr<NSAlert> SimAlerts::make() {
    return std::make_unique<SimAlert>(log_, *this, log_.nextName("alert"), std::nullopt);
}

std::unique_ptr<NSAlert> SimAlerts::makeForError(const NSError& error) {
    const std::string name = log_.nextName("alert");
    const std::string call = "alertWithError: " + error.localizedDescription + " -> " + name;
    log_.requireMain(call);
    log_.record(call);
    return std::make_unique<SimAlert>(log_, *this, name, error);
}

void SimAlerts::answer(NSModalResponse response) {
    const std::lock_guard lock(mutex_);
    answers_.push_back(response);
}

std::vector<SimShownAlert> SimAlerts::shown() const {
    const std::lock_guard lock(mutex_);
    return shown_;
}

std::vector<SimShownAlert> SimAlerts::takeShown() {
    const std::lock_guard lock(mutex_);
    return std::exchange(shown_, {});
}

NSModalResponse SimAlerts::run(SimShownAlert alert) {
    std::size_t number = 0;
    {
        const std::lock_guard lock(mutex_);
        if (!answers_.empty()) {
            alert.answer = answers_.front();
            answers_.pop_front();
        }
        shown_.push_back(alert);
        number = shown_.size();
    }
    const std::shared_ptr<SimThread> thread = SimRole::thread();
    if (thread && number > mostAlerts) {
        log_.misuse(thread->name() + " shows alerts without end");
        thread->cancelQuietly();
    }
    const auto act = [&] {
        if (action_) {
            action_(alert);
        }
    };
    if (alert.onMainThread) {
        loop_.runModal(seconds_, act);
    } else {
        act();
        if (!threads_.areReal()) {
            loop_.advance(seconds_);
        }
    }
    return alert.answer;
}

class SimOpenPanel final : public NSOpenPanel, public SimObject {
public:
    SimOpenPanel(CallLog& log, SimOpenPanels& panels)
        : SimObject(log, "openPanel"), panels_(panels) {}

    void setTitle(const std::string& title) override { mainCall("setTitle: " + title); }
    void setCanChooseDirectories(bool allowed) override {
        mainCall("setCanChooseDirectories: " + yesNo(allowed));
    }
    void setCanCreateDirectories(bool allowed) override {
        mainCall("setCanCreateDirectories: " + yesNo(allowed));
    }
    void setAllowsMultipleSelection(bool allowed) override {
        mainCall("setAllowsMultipleSelection: " + yesNo(allowed));
    }
    void setCanChooseFiles(bool allowed) override {
        mainCall("setCanChooseFiles: " + yesNo(allowed));
    }
    void setPrompt(const std::string& prompt) override { mainCall("setPrompt: " + prompt); }

    NSModalResponse runModal() override {
        mainCall("runModal");
        outcome_ = panels_.run();
        return outcome_.response;
    }

    std::optional<NSURL> URL() const override {
        mainGetter("URL");
        return outcome_.url;
    }

private:
    SimOpenPanels& panels_;
    SimOpenPanels::Outcome outcome_;
};

std::unique_ptr<NSOpenPanel> SimOpenPanels::make() {
    return std::make_unique<SimOpenPanel>(log_, *this);
}

void SimOpenPanels::choose(const std::string& path) {
    confirmWith(NSURL::fileURLWithPath(path));
}

void SimOpenPanels::confirmWith(std::optional<NSURL> url) {
    outcomes_.push_back({NSModalResponseOK, std::move(url)});
}

void SimOpenPanels::cancel() {
    outcomes_.push_back({});
}

SimOpenPanels::Outcome SimOpenPanels::run() {
    Outcome outcome;
    if (!outcomes_.empty()) {
        outcome = std::move(outcomes_.front());
        outcomes_.pop_front();
    }
    loop_.runModal(seconds_, action_);
    return outcome;
}

} // namespace vistrane
