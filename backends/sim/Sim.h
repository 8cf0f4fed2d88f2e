#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimAlerts.h"
#include "backends/sim/SimCameras.h"
#include "backends/sim/SimControls.h"
#include "backends/sim/SimFiles.h"
#include "backends/sim/SimFoundation.h"
#include "backends/sim/SimLoop.h"
#include "backends/sim/SimMovies.h"
#include "backends/sim/SimPictures.h"
#include "backends/sim/SimThreads.h"
#include "platform/platform.h"

namespace vistrane {

struct SimApplication final : SimOf<NSApplication> {
    using SimOf::SimOf;
    void miniaturizeAll(NSObject*) override { mainCall("miniaturizeAll"); }
    bool setActivationPolicy(NSApplicationActivationPolicy policy) override {
        mainCall("setActivationPolicy: %", +policy);
        return true;
    }
    void activateIgnoringOtherApps(bool ignoring) override {
        mainCall("activateIgnoringOtherApps: %", ignoring);
    }
};

struct SimWorkspace final : SimOf<NSWorkspace> {
    using SimOf::SimOf;
    bool openURL(const NSURL& url) override {
        call("openURL: %", url.absoluteString());
        return opens;
    }

    /// Whether there is a program that opens addresses.
    std::atomic<bool> opens{true};
};

/// The whole kit. Its parts implement their messages.
class SimAppKit final : public SimAlerts, public SimPictures, public SimDrawing {
public:
    SimAppKit(CallLog& log, SimLoop& loop, SimThreads& threads, SimFiles& files)
        : SimAlerts(log, loop, threads), SimPictures(log, files), SimDrawing(log), log_(log) {}

    NSApplication& sharedApplication() override { return application; }
    NSWorkspace& sharedWorkspace() override { return workspace; }
    std::shared_ptr<NSMenu> menu() override {
        auto menu = std::make_shared<SimMenu>(log_, log_.nextName("menu"));
        log_.recordOnMain("menu -> %", menu);
        return menu;
    }
    void NSBeep() override { log_.recordOnMain("NSBeep"); }

private:
    CallLog& log_;

public:
    SimApplication application{log_, "sharedApplication"};
    SimWorkspace workspace{log_, "sharedWorkspace"};
};

class SimAVFoundation final : public SimCameras, public SimMovies {
public:
    SimAVFoundation(CallLog& log, SimPictures& pictures, SimFiles& files, SimDrawing& drawing)
        : SimCameras(log, pictures), SimMovies(log, files, drawing) {}
};

/// A whole system for tests: every interface as a scripted double, on a virtual clock, without a
/// disk, a screen or a camera. It records each platform call in order, as in
///
///     "hInput setIntValue: 7"
///     "standardUserDefaults integerForKey: iHour"
///     "scheduledTimerWithTimeInterval: 5 repeats: YES -> timer1"
///
/// Controls are named after their outlets, other objects by kind and number. Plain reads (titles,
/// values, sizes, ...) are left out; reads that reach the system (settings, files, dates, a
/// device's media, whether a session runs, the selected device) are recorded.
///
/// It also keeps a list of misuses, that is breaches of an interface's contract, such as a control
/// touched off the main thread or a pixel buffer released twice. A test should end with that list
/// empty.
///
/// The program's objects must not outlive the sim. Its end cancels and joins their real threads.
class Sim {
public:
    Sim()
        : loop_(log_), files_(log_), threads_(log_), nib_(log_),
          foundation_(log_, loop_, threads_, files_), appKit_(log_, loop_, threads_, files_),
          avFoundation_(log_, appKit_, files_, appKit_) {}
    ~Sim() { threads_.end(); }
    Sim(const Sim&) = delete;
    Sim& operator=(const Sim&) = delete;

    Platform platform() { return {foundation_, appKit_, avFoundation_, appKit_, appKit_, loop_}; }

    std::vector<std::string> calls() const { return log_.calls(); }
    /// Returns the calls so far and forgets them.
    std::vector<std::string> takeCalls() { return log_.takeCalls(); }
    std::vector<std::string> misuses() const { return log_.misuses(); }

    /// The messages of the system log among the calls so far.
    std::vector<std::string> logLines() const {
        constexpr std::string_view start = "NSLog: ";
        std::vector<std::string> lines;
        for (const std::string& call : log_.calls()) {
            if (call.starts_with(start)) {
                lines.push_back(call.substr(start.size()));
            }
        }
        return lines;
    }

    // Time; see SimLoop.
    void advance(double seconds) { loop_.advance(seconds); }
    void stall(double seconds) { loop_.stall(seconds); }
    void at(double seconds, std::function<void()> event) { loop_.at(seconds, std::move(event)); }
    void setDate(double secondsSince1970) { loop_.setDate({secondsSince1970}); }

    /// Runs the entry of the started thread of that number, counted from 1, on the calling thread.
    void runThread(std::size_t number) { threads_.run(number); }
    /// Runs the main loop until every real thread has ended and no work waits.
    void advanceUntilThreadsEnd(double step = 0.1) {
        // A thread posts before it ends: once all have ended, one more turn takes the rest.
        while (!threads_.allFinished()) {
            loop_.advance(step);
            std::this_thread::yield();
        }
        loop_.advance(0.0);
    }
    void postNotification(const std::string& name) { foundation_.notifications.post(name); }

    CallLog& log() { return log_; }
    SimLoop& loop() { return loop_; }
    SimThreads& threads() { return threads_; }
    SimFiles& files() { return files_; }
    SimDrawing& drawing() { return appKit_; }
    SimPictures& pictures() { return appKit_; }
    SimAlerts& alerts() { return appKit_; }
    SimWorkspace& workspace() { return appKit_.workspace; }
    SimCameras& cameras() { return avFoundation_; }
    SimMovies& movies() { return avFoundation_; }
    SimUserDefaults& defaults() { return foundation_.defaults; }
    SimBookmarks& bookmarks() { return foundation_.bookmarks; }
    SimBundle& bundle() { return foundation_.bundle; }
    SimProcessInfo& processInfo() { return foundation_.process; }
    SimNib& nib() { return nib_; }

private:
    CallLog log_;
    SimLoop loop_;
    SimFiles files_;
    SimThreads threads_;
    SimNib nib_;
    SimFoundation foundation_;
    SimAppKit appKit_;
    SimAVFoundation avFoundation_;
};

} // namespace vistrane
