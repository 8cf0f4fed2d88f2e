#pragma once

#include <functional>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimAVFoundation.h"
#include "backends/sim/SimAppKit.h"
#include "backends/sim/SimCameras.h"
#include "backends/sim/SimDrawing.h"
#include "backends/sim/SimFiles.h"
#include "backends/sim/SimFoundation.h"
#include "backends/sim/SimLoop.h"
#include "backends/sim/SimMovies.h"
#include "backends/sim/SimNib.h"
#include "backends/sim/SimPanels.h"
#include "backends/sim/SimPictures.h"
#include "backends/sim/SimRole.h"
#include "backends/sim/SimThreads.h"
#include "platform/platform.h"

namespace vistrane {

/// A whole system for tests: every interface as a scripted double, on a virtual clock, without a
/// disk, a screen or a camera. It records each platform call in order, as in
///
///     "hInput setIntValue: 7"
///     "standardUserDefaults integerForKey: iHour"
///     "scheduledTimerWithTimeInterval: 5 repeats: YES -> timer1"
///
/// Controls are named after their outlets, other objects by kind and number. Plain reads (titles,
/// values, sizes, ...) are left out unless `recordGetters` is on; reads that reach the system
/// (settings, files, dates, whether a session runs, the selected device) always count.
///
/// It also keeps a list of misuses: what was done against an interface's contract, such as a
/// control touched off the main thread or a pixel buffer released twice. A test should end with
/// that list empty.
///
/// The program's objects must not outlive the sim; real threads of theirs are ended with it.
class Sim {
public:
    Sim();
    ~Sim();
    Sim(const Sim&) = delete;
    Sim& operator=(const Sim&) = delete;

    Platform platform();

    std::vector<std::string> calls() const { return log_.calls(); }
    /// Returns the calls so far and forgets them.
    std::vector<std::string> takeCalls() { return log_.takeCalls(); }
    void recordGetters(bool wanted = true) { log_.recordGetters(wanted); }
    std::vector<std::string> misuses() const { return log_.misuses(); }
    std::vector<std::string> takeMisuses() { return log_.takeMisuses(); }

    /// The messages of the system log among the calls so far.
    std::vector<std::string> logLines() const;

    // Time; see SimLoop.
    void advance(double seconds) { loop_.advance(seconds); }
    void stall(double seconds) { loop_.stall(seconds); }
    void at(double seconds, std::function<void()> event) { loop_.at(seconds, std::move(event)); }
    void setDate(double secondsSince1970) { loop_.setDate({secondsSince1970}); }

    /// Runs the entry of the started thread of that number, counted from 1, on the calling thread.
    void runThread(std::size_t number) { threads_.run(number); }
    /// Lets the main loop run until every real thread has ended and nothing waits any more.
    void advanceUntilThreadsEnd(double step = 0.1);
    void postNotification(const std::string& name) { foundation_.notifications.post(name); }

    CallLog& log() { return log_; }
    SimLoop& loop() { return loop_; }
    SimThreads& threads() { return threads_; }
    SimFiles& files() { return files_; }
    SimDrawing& drawing() { return drawing_; }
    SimPictures& pictures() { return pictures_; }
    SimAlerts& alerts() { return alerts_; }
    SimOpenPanels& openPanels() { return panels_; }
    SimCameras& cameras() { return cameras_; }
    SimMovies& movies() { return movies_; }
    SimUserDefaults& defaults() { return foundation_.defaults; }
    SimBookmarks& bookmarks() { return foundation_.bookmarks; }
    SimBundle& bundle() { return foundation_.bundle; }
    SimProcessInfo& processInfo() { return foundation_.process; }
    SimDateRules& dateRules() { return foundation_.dateRules; }
    SimWorkspace& workspace() { return appKit_.workspace; }
    SimNib& nib() { return nib_; }

private:
    CallLog log_;
    SimLoop loop_;
    SimFiles files_;
    SimDrawing drawing_;
    SimPictures pictures_;
    SimNib nib_;
    SimMovies movies_;
    SimCameras cameras_;
    SimThreads threads_;
    SimAlerts alerts_;
    SimOpenPanels panels_;
    SimFoundation foundation_;
    SimAppKit appKit_;
    SimAVFoundation avFoundation_;
};

} // namespace vistrane
