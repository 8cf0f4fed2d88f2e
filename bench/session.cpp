// Runs the program in its window on a virtual display, and operates its controls:
//
//   session_bench start FOLDER             ends when the window is exposed and handles events
//   session_bench launch FOLDER            ends when the settings are in the controls and the
//                                          cameras in their list
//   session_bench compile FOLDER FPS       from the click to the finished movie
//   session_bench compile-alone FOLDER FPS the same without a window
//   session_bench play FOLDER FPS          from frame to frame, as painted, at that many a second
//   session_bench drag FOLDER              the longest time from a place of the dragged frame
//   slider
//                                          until its frame is painted
//   session_bench idle FOLDER SECONDS      the processor time of a window that nobody uses
//   session_bench wake-ups FOLDER SECONDS  how often its threads wake up, per second
//   session_bench capture FOLDER SECONDS   with the first camera, a still at each interval of the
//                                          settings: the longest that an event waited
//
// Prints the measurement, most in milliseconds; for "start" and "launch" the caller times the
// process.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QLabel>
#include <QSlider>
#include <QTimer>
#include <QWindow>

#include <unistd.h>

#include "bench/measuring.h"
#include "frontends/commandline/Session.h"
#include "frontends/window/WindowLog.h"
#include "frontends/window/WindowSession.h"
#include "frontends/window/open_window.h"

namespace vistrane::bench {

namespace {

[[noreturn]] void tell(double number) {
    std::printf("%.3f\n", number);
    std::fflush(stdout);
    std::_Exit(0);
}

template <typename Widget>
Widget& control(const char* name) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == name) {
            if (auto* const found = qobject_cast<Widget*>(window)) {
                return *found;
            }
        }
        if (auto* const found = window->findChild<Widget*>(name)) {
            return *found;
        }
    }
    require(false, std::string("the window has no ") + name);
    std::abort();
}

/// Polls `condition` every `period` milliseconds and then calls `then`.
void when(const std::function<bool()>& condition, const std::function<void()>& then,
          int period = 5) {
    auto* const look = new QTimer(qApp);
    QObject::connect(look, &QTimer::timeout, [=] {
        if (condition()) {
            look->stop();
            look->deleteLater();
            then();
        }
    });
    look->start(period);
}

std::size_t countIn(const std::string& folder, const std::string& extension) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::filesystem::path& path = entry.path();
        if (path.extension() == extension && path.filename().string().front() != '.') {
            ++count;
        }
    }
    return count;
}

/// Waits until the newest frame of the folder is shown.
void whenListed(const std::string& folder, const std::function<void()>& then) {
    const auto count = QString::number(countIn(folder, ".png"));
    auto& readOut = control<QLabel>("currentS");
    when([&readOut, count] { return readOut.text().endsWith(" of " + count); }, then);
}

void compile(const std::string& folder, int rate) {
    whenListed(folder, [=] {
        control<QSlider>("fpsS").setValue(rate);
        auto& button = control<QAbstractButton>("compilingB");
        const std::size_t before = countIn(folder, ".mov");
        const double started = milliseconds();
        button.click();
        when([=, &button] { return button.isEnabled() && countIn(folder, ".mov") > before; },
             [=] { tell(milliseconds() - started); });
    });
}

void compileAlone(const std::string& folder, int rate) {
    SessionOptions options;
    options.folder = folder;
    Session& session = *new Session(options);
    session.launch();
    session.frames();
    const double started = milliseconds();
    session.compile(rate);
    tell(milliseconds() - started);
}

/// Records when the frames of a playback are painted.
class PaintWatch final : public QObject {
public:
    explicit PaintWatch(const QSlider& slider) : slider_(slider) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && slider_.value() != shown_) {
            shown_ = slider_.value();
            times_.push_back(milliseconds());
        }
        return QObject::eventFilter(watched, event);
    }

    /// Whether the last frame was painted.
    bool isOver() const { return times_.size() > 1 && shown_ == slider_.maximum(); }
    double meanPeriod() const {
        return (times_.back() - times_.front()) / static_cast<double>(times_.size() - 1);
    }

private:
    const QSlider& slider_;
    int shown_ = -1;
    std::vector<double> times_;
};

void play(const std::string& folder, int rate) {
    whenListed(folder, [=] {
        control<QSlider>("fpsS").setValue(rate);
        // By now the newest frame has been painted.
        QTimer::singleShot(500, qApp, [] {
            auto* const watch = new PaintWatch(control<QSlider>("photoSlider"));
            control<QWidget>("myDisplay").installEventFilter(watch);
            control<QAbstractButton>("previewPlayButton").click();
            when([=] { return watch->isOver(); }, [=] { tell(watch->meanPeriod()); });
        });
    });
}

/// Drags the frame slider to another frame every 16 ms. As with a mouse, a place that the main
/// thread has not seen yet is replaced by the next one.
class DragWatch final : public QObject {
public:
    explicit DragWatch(QSlider& slider) : slider_(slider) {}

    void begin() {
        std::thread([this, count = slider_.maximum() + 1] {
            constexpr int places = 200;
            for (int place = 0; place < places; ++place) {
                std::this_thread::sleep_for(std::chrono::milliseconds(16));
                const std::lock_guard lock(mutex_);
                wanted_ = 7 * place % count;
                wantedAt_ = milliseconds();
                if (!std::exchange(isPosted_, true)) {
                    QMetaObject::invokeMethod(
                        this, [this] { move(); }, Qt::QueuedConnection);
                }
            }
            QMetaObject::invokeMethod(
                this, [this] { isOver_ = true; }, Qt::QueuedConnection);
        }).detach();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Paint || shownAt_ == 0.0) {
            return QObject::eventFilter(watched, event);
        }
        // The frame is decoded in here.
        const bool isHandled = watched->event(event);
        times_.push_back(milliseconds() - std::exchange(shownAt_, 0.0));
        return isHandled;
    }

    bool isOver() const { return isOver_ && shownAt_ == 0.0; }
    double longest() const { return quantile(times_, 1.0); }
    double median() const { return quantile(times_, 0.5); }

private:
    void move() {
        int place = 0;
        {
            const std::lock_guard lock(mutex_);
            isPosted_ = false;
            place = wanted_;
            shownAt_ = wantedAt_;
        }
        slider_.setValue(place);
    }

    QSlider& slider_;
    std::mutex mutex_;
    int wanted_ = 0;
    double wantedAt_ = 0.0;
    bool isPosted_ = false;
    /// When the frame was wanted that is painted next; 0 if none is.
    double shownAt_ = 0.0;
    bool isOver_ = false;
    std::vector<double> times_;
};

void drag(const std::string& folder) {
    whenListed(folder, [] {
        QTimer::singleShot(500, qApp, [] {
            auto* const watch = new DragWatch(control<QSlider>("photoSlider"));
            control<QWidget>("myDisplay").installEventFilter(watch);
            watch->begin();
            when([=] { return watch->isOver(); },
                 [=] {
                     std::fprintf(stderr, "median %.1f ms\n", watch->median());
                     tell(watch->longest());
                 });
        });
    });
}

void idle(double seconds) {
    // By now the list of frames is settled and the cameras are listed.
    QTimer::singleShot(5000, qApp, [=] {
        const double before = processorMilliseconds();
        QTimer::singleShot(static_cast<int>(seconds * 1000), qApp,
                           [=] { tell(processorMilliseconds() - before); });
    });
}

/// How often the threads of this process have been given a processor after they waited for
/// something.
double wakeUps() {
    double sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string word; status >> word;) {
            double count = 0;
            if (word == "voluntary_ctxt_switches:" && status >> count) {
                sum += count;
            }
        }
    }
    return sum;
}

void idleWakeUps(double seconds) {
    QTimer::singleShot(5000, qApp, [=] {
        const double before = wakeUps();
        QTimer::singleShot(static_cast<int>(seconds * 1000), qApp,
                           [=] { tell((wakeUps() - before) / seconds); });
    });
}

/// Sends the main thread an event every five milliseconds and measures how long it waits.
class AnswerWatch {
public:
    void begin() {
        std::thread([this] {
            for (;;) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                isAnswered_ = false;
                const double sent = milliseconds();
                QMetaObject::invokeMethod(
                    qApp,
                    [this, sent] {
                        answers_.push_back(milliseconds() - sent);
                        isAnswered_ = true;
                        isAnswered_.notify_one();
                    },
                    Qt::QueuedConnection);
                isAnswered_.wait(false);
            }
        }).detach();
    }

    /// Main thread.
    double longest() const { return quantile(answers_, 1.0); }
    double median() const { return quantile(answers_, 0.5); }

private:
    std::atomic<bool> isAnswered_{false};
    std::vector<double> answers_;
};

void capture(const std::string& folder, double seconds) {
    auto& popUp = control<QComboBox>("AVDevicePopUp");
    require(popUp.count() > 0, "there is no camera");
    popUp.setCurrentIndex(0);
    emit popUp.activated(0);
    const std::size_t before = countIn(folder, ".png");
    const auto begin = [=] {
        control<QAbstractButton>("startB").click();
        auto* const watch = new AnswerWatch;
        watch->begin();
        QTimer::singleShot(static_cast<int>(seconds * 1000), qApp, [=] {
            const std::size_t stills = countIn(folder, ".png") - before;
            std::fprintf(stderr, "%zu stills, answers: median %.1f ms\n", stills, watch->median());
            require(static_cast<double>(stills) >= seconds - 2, "stills are missing");
            tell(watch->longest());
        });
    };
    // By now the camera delivers pictures.
    QTimer::singleShot(2000, qApp, begin);
}

void endWhenExposed() {
    const QWidget& window = control<QWidget>("myWindow");
    const auto isExposed = [&window] {
        return window.windowHandle() != nullptr && window.windowHandle()->isExposed();
    };
    when(
        isExposed, [] { std::_Exit(0); }, 1);
}

void run(const std::vector<std::string>& arguments) {
    require(arguments.size() >= 2, "usage: session_bench VERB FOLDER [NUMBER]");
    const std::string& verb = arguments[0];
    const std::string& folder = arguments[1];
    const double number = arguments.size() > 2 ? std::strtod(arguments[2].c_str(), nullptr) : 0;
    if (verb == "compile-alone") {
        compileAlone(folder, static_cast<int>(number));
    }
    WindowLog& log = *new WindowLog(STDERR_FILENO);
    makeApplication();
    WindowOptions options;
    options.version = "0.0.0";
    options.folder = folder;
    WindowSession& session = *new WindowSession(options, log);
    if (verb == "start") {
        endWhenExposed();
    }
    session.run([&] {
        if (verb == "start" || verb == "launch") {
            endWhenExposed();
        } else if (verb == "compile") {
            compile(folder, static_cast<int>(number));
        } else if (verb == "play") {
            play(folder, static_cast<int>(number));
        } else if (verb == "drag") {
            drag(folder);
        } else if (verb == "idle") {
            idle(number);
        } else if (verb == "wake-ups") {
            idleWakeUps(number);
        } else if (verb == "capture") {
            capture(folder, number);
        } else {
            require(false, "unknown verb: " + verb);
        }
    });
}

} // namespace

} // namespace vistrane::bench

int main(int count, char** arguments) {
    vistrane::bench::run({arguments + 1, arguments + count});
}
