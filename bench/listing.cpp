// Ticks of the frame list and other ways to list a folder: listing_bench [--short] [--cpu] [FOLDER]
//
// A tick is the controller's own, with the real file system and collation, and with controls and
// pictures that cost nothing. It takes turns with its peer:
//   quiet-tick     nothing has changed; the peer reads the folder with readdir
//   quiet-tick-longest  the longest of these; the peer is 100 ms, the interval of the ticks
//   new-frame-tick one frame is new; the peer is that of quiet-tick
//   new-frame-cost the processor time of ten ticks, one each 100 ms, after one frame is new; not
//                  compared: the peer is 40 ms
//   first-listing  a controller's first tick; QDir lists and QCollator compares
//   first-listing  kind "sort-keys": the same, sorted by QCollator's keys
//   kept-bytes     not times but thousands of bytes that stay in use: ours, and QDir's list
// Each is a row as `printTurns` prints it. The folders are created in FOLDER, or in the folder for
// temporary files, and removed. --short omits a million names. --cpu measures processor time, for a
// machine that is busy.

#include <QCollator>
#include <QCollatorSortKey>
#include <QDir>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include "backends/sim/Sim.h"
#include "bench/RealFiles.h"
#include "bench/measuring.h"
#include "core/app/AppDelegate.h"

namespace vistrane::bench {

namespace {

constexpr int turns = 9;

double (*measuredClock)() = milliseconds;

/// One turn of both sides. `before` is not measured.
struct Pair {
    std::function<void()> before;
    std::function<void()> ours;
    std::function<void()> peer;
};

/// Prints a row and returns the longest time of ours.
double compare(const char* name, const char* kind, std::size_t size, const Pair& pair) {
    Turns taken;
    for (int turn = 0; turn < turns; ++turn) {
        pair.before();
        taken.ours.push_back(timeOf(pair.ours, measuredClock));
        taken.peer.push_back(timeOf(pair.peer, measuredClock));
    }
    printTurns({name, kind, std::to_string(size)}, taken);
    return quantile(taken.ours, 1.0);
}

/// A folder of frames, named by the second. It is removed with this object.
class Folder {
public:
    explicit Folder(const std::string& parent) {
        path_ = parent + "/vistrane-listing-XXXXXX";
        require(mkdtemp(path_.data()) != nullptr, "cannot make a folder in " + parent);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& path() const { return path_; }
    std::size_t count() const { return count_; }

    void grow(std::size_t count) {
        for (; count_ < count; ++count_) {
            const auto moment = static_cast<std::time_t>(1767225600 + count_);
            std::tm parts{};
            gmtime_r(&moment, &parts);
            char name[64];
            std::strftime(name, sizeof name, "/%y-%m-%d-%H-%M-%S.png", &parts);
            const int file = open((path_ + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
            require(file >= 0, "cannot make a file in " + path_);
            close(file);
        }
    }

private:
    std::string path_;
    std::size_t count_ = 0;
};

class Controller {
public:
    explicit Controller(const std::string& folder) {
        sim_.log().recordCalls(false);
        delegate_.connectInterface(sim_.nib());
        sim_.nib().button("outfolderB").currentTitle = folder;
    }

    void tick() { delegate_.refreshArray(nullptr); }
    std::vector<std::string> frames() { return *delegate_.pictureArray.load(); }

private:
    Platform platform() {
        Platform platform = sim_.platform();
        return {files_,
                platform.appKit,
                platform.avFoundation,
                platform.coreVideo,
                platform.coreGraphics,
                platform.dispatch};
    }

    Sim sim_;
    RealFiles files_{sim_.platform().foundation};
    AppDelegate delegate_{platform()};
};

/// The peer of the ticks: counts the entries.
std::size_t readWithReaddir(const std::string& path) {
    DIR* folder = opendir(path.c_str());
    require(folder != nullptr, "the folder cannot be read");
    std::size_t count = 0;
    while (readdir(folder) != nullptr) {
        ++count;
    }
    closedir(folder);
    return count;
}

QStringList listWithQDir(const std::string& path) {
    const QDir folder(QString::fromStdString(path));
    return folder.entryList({"*.png"}, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                            QDir::Unsorted);
}

QCollator collator() {
    QCollator result(QLocale("en_US"));
    result.setNumericMode(true);
    result.setCaseSensitivity(Qt::CaseInsensitive);
    return result;
}

QStringList sortedWithQCollator(const std::string& path) {
    QStringList names = listWithQDir(path);
    const QCollator order = collator();
    std::sort(names.begin(), names.end(), order);
    return names;
}

QStringList sortedByQCollatorsKeys(const std::string& path) {
    const QCollator order = collator();
    std::vector<std::pair<QCollatorSortKey, QString>> keyed;
    for (const QString& name : listWithQDir(path)) {
        keyed.emplace_back(order.sortKey(name), name);
    }
    std::sort(keyed.begin(), keyed.end(),
              [](const auto& first, const auto& second) { return first.first < second.first; });
    QStringList names;
    for (const auto& [key, name] : keyed) {
        names.append(name);
    }
    return names;
}

void requireSame(const std::string& folder, const std::vector<std::string>& ours,
                 const QStringList& theirs) {
    require(ours.size() == static_cast<std::size_t>(theirs.size()), "the numbers of frames differ");
    for (std::size_t at = 0; at < ours.size(); ++at) {
        require(ours[at] == folder + "/" + theirs[static_cast<qsizetype>(at)].toStdString(),
                "the orders differ");
    }
}

double bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void measureMemory(const Folder& folder) {
    Controller controller(folder.path());
    double before = bytesInUse();
    controller.tick();
    const double ours = bytesInUse() - before;
    before = bytesInUse();
    const QStringList names = sortedWithQCollator(folder.path());
    const double theirs = bytesInUse() - before;
    printTurns({"kept-bytes", "stamps", std::to_string(names.size())},
               {{ours / 1e3}, {theirs / 1e3}});
}

/// A listing that is read within moments of a change is not used again, so that some new frames
/// cost two listings: each comes at another time before the first tick.
void measureNewFrames(Folder& folder, const std::function<void()>& tick) {
    constexpr std::chrono::milliseconds interval(100);
    constexpr int frames = 10;
    std::vector<double> costs;
    for (int turn = 0; turn < frames; ++turn) {
        folder.grow(folder.count() + 1);
        std::this_thread::sleep_for(interval * turn / frames);
        const double before = processorMilliseconds();
        for (int times = 0; times < 10; ++times) {
            tick();
            std::this_thread::sleep_for(interval);
        }
        costs.push_back(processorMilliseconds() - before);
    }
    const double sum = std::accumulate(costs.begin(), costs.end(), 0.0);
    printTurns({"new-frame-cost", "stamps", std::to_string(folder.count() / 1000 * 1000)},
               {{sum / frames}, {40.0}});
}

void measure(const std::string& parent, std::size_t count) {
    Folder folder(parent);
    folder.grow(count);
    const auto nothing = [] {};
    std::size_t entries = 0;
    const auto readdirLoop = [&] { entries = readWithReaddir(folder.path()); };

    Controller controller(folder.path());
    controller.tick();
    const auto tick = [&] { controller.tick(); };
    constexpr double untilTheNext = 100.0;
    const double longest = compare("quiet-tick", "stamps", count, {nothing, tick, readdirLoop});
    printTurns({"quiet-tick-longest", "stamps", std::to_string(count)},
               {{longest}, {untilTheNext}});
    require(entries == controller.frames().size() + 2, "the numbers of names differ");

    std::unique_ptr<Controller> fresh;
    QStringList theirs;
    const auto renew = [&] { fresh = std::make_unique<Controller>(folder.path()); };
    const auto firstTick = [&] { fresh->tick(); };
    compare("first-listing", "stamps", count,
            {renew, firstTick, [&] { theirs = sortedWithQCollator(folder.path()); }});
    requireSame(folder.path(), fresh->frames(), theirs);
    compare("first-listing", "sort-keys", count,
            {renew, firstTick, [&] { theirs = sortedByQCollatorsKeys(folder.path()); }});
    requireSame(folder.path(), fresh->frames(), theirs);
    fresh.reset();

    measureMemory(folder);

    // Last, because they change the folder.
    compare("new-frame-tick", "stamps", count,
            {[&] { folder.grow(folder.count() + 1); }, tick, readdirLoop});
    measureNewFrames(folder, tick);
    requireSame(folder.path(), controller.frames(), sortedWithQCollator(folder.path()));
}

int run(int count, char** arguments) {
    setenv("LC_ALL", "en_US.UTF-8", 1);
    std::vector<std::size_t> sizes = {1000, 10000, 100000, 200000, 1000000};
    std::string parent = std::filesystem::temp_directory_path();
    for (int at = 1; at < count; ++at) {
        if (std::string_view(arguments[at]) == "--short") {
            sizes.pop_back();
        } else if (std::string_view(arguments[at]) == "--cpu") {
            measuredClock = processorMilliseconds;
        } else {
            parent = arguments[at];
        }
    }
    for (const std::size_t size : sizes) {
        measure(parent, size);
    }
    return 0;
}

} // namespace

} // namespace vistrane::bench

int main(int count, char** arguments) {
    return vistrane::bench::run(count, arguments);
}
