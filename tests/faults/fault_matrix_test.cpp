#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <regex>
#include <sstream>
#include <system_error>
#include <thread>

#include "tests/faults/FaultCells.h"
#include "tests/faults/FaultTable.h"
#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::EndsWith;
using testing::Ge;
using testing::HasSubstr;
using testing::Not;

using Files = std::map<std::string, std::string>;

/// What the cells of this run did, for the table.
std::map<std::string, FaultOutcome>& outcomes() {
    static std::map<std::string, FaultOutcome> all;
    return all;
}

bool writesTable() {
    const char* const variable = std::getenv("VISTRANE_FAULT_TABLE");
    return variable != nullptr && std::string(variable) == "write";
}

Files filesIn(const std::string& folder) {
    Files files;
    for (const std::string& name : namesIn(folder)) {
        files[name] = contentsOf(folder + "/" + name);
    }
    return files;
}

std::string replaceAll(std::string text, const std::string& part, const std::string& by) {
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + by.size())) {
        text.replace(at, part.size(), by);
    }
    return text;
}

/// The names of the settings in an INI file.
std::vector<std::string> keysOf(const std::string& settings) {
    std::vector<std::string> keys;
    std::istringstream lines(settings);
    for (std::string line; std::getline(lines, line);) {
        if (const std::size_t end = line.find('='); end != std::string::npos) {
            keys.push_back(line.substr(0, end));
        }
    }
    return keys;
}

/// One cell of the matrix: runs the program with the fault, and checks what is left on the disk.
class FaultMatrix : public CommandLineTest, public testing::WithParamInterface<FaultCell> {
protected:
    FaultMatrix() {
        options.environment["LD_PRELOAD"] = VISTRANE_FAULT_SHIM;
        options.environment["VISTRANE_FAULT"] = GetParam().setting;
        options.environment["VISTRANE_FAULT_LOG"] = faultLog;
        options.environment["QT_QPA_PLATFORM"] = "offscreen";
        options.timeout = std::chrono::seconds(90);
        options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + work / "no bus";
        options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + work / "no bus";
    }

    FaultOutcome runScene() {
        switch (GetParam().scene) {
        case FaultScene::savingFrames:
            return runSavingFrames();
        case FaultScene::readingFrames:
        case FaultScene::writingMovie:
            return runCompiling();
        case FaultScene::listing:
            return runListing();
        case FaultScene::readingSettings:
            return runReadingSettings();
        case FaultScene::savingSettings:
            return runSavingSettings();
        }
        return {};
    }

    FaultOutcome runSavingFrames() {
        writeGreyFrame(folder + "/00 before.png", 50);
        const Files before = filesIn(folder);
        const Ended ended = run({"capture", folder, "--demo-camera", "--device", "Demo Camera",
                                 "--interval", "1", "--count", "2", "--verbose"});
        return outcomeOf(ended, newInFolder(before));
    }

    FaultOutcome runCompiling() {
        FrameForm form;
        form.width = 640;
        form.height = 480;
        for (const char* name : {"a.png", "b.png", "c.png"}) {
            form.colour[0] += 20;
            const std::string path = folder + "/" + name;
            writeFrame(path, form);
            // Frames of the future are not decoded ahead, so every run makes the same calls.
            const auto hour = std::chrono::hours(1);
            std::filesystem::last_write_time(path,
                                             std::filesystem::file_time_type::clock::now() + hour);
        }
        writeFile(folder + "/20250101-000000.mov", "an earlier movie");
        const Files before = filesIn(folder);
        const Ended ended = run({"compile", folder, "--verbose"});
        const std::string disk = newInFolder(before);
        // Status 3: a movie was made, and frames were left out.
        EXPECT_EQ(ended.status == 0 || ended.status == 3, disk.starts_with("STAMP.mov")) << disk;
        expectCleanUp(before);
        return outcomeOf(ended, disk);
    }

    /// The next movie publishes or removes a hidden file.
    void expectCleanUp(const Files& before) {
        if (namesEndingIn(".vistrane-part", folder).empty()) {
            return;
        }
        options.environment.erase("LD_PRELOAD");
        // Otherwise the next movie may have the same name.
        std::this_thread::sleep_for(std::chrono::seconds(1));
        EXPECT_EQ(run({"compile", folder}).status, 0);
        EXPECT_THAT(newInFolder(before), Not(HasSubstr("hidden")));
    }

    FaultOutcome runListing() {
        for (const char* name : {"/a.png", "/b.png"}) {
            writeGreyFrame(folder + name, 50);
        }
        const Files before = filesIn(folder);
        const Ended ended = run({"frames", folder, "--verbose"});
        const std::size_t lines = ended.lines().size();
        return outcomeOf(ended, newInFolder(before) + "; " +
                                    (lines == 0 ? "no" : std::to_string(lines)) +
                                    " frames printed");
    }

    std::string settingsPath() const { return home + "/.config/vistrane/settings"; }

    void storeSettings() const {
        std::filesystem::create_directories(home + "/.config/vistrane");
        writeFile(settingsPath(),
                  "[General]\nfirstTime=1\nfirstTimeRunning=1\niFPS=12\niTip=1\nother=7\n");
        // Showing the newest frame fails with a message: then the launch is over.
        writeFile(folder + "/frame.png", "damage");
    }

    FaultOutcome runReadingSettings() {
        storeSettings();
        const std::string before = contentsOf(settingsPath());
        Program program(command({folder}), options);
        if (program.waitForError("frame.png")) {
            program.signal(SIGTERM);
        }
        const Ended ended = program.wait();
        return outcomeOf(ended, changeOfSettings(before));
    }

    FaultOutcome runSavingSettings() {
        storeSettings();
        const std::string gate = work / "gate";
        options.environment["VISTRANE_FAULT_GATE"] = gate;
        Program program(command({folder}), options);
        EXPECT_TRUE(program.waitForError("frame.png"));
        const std::string before = contentsOf(settingsPath());
        writeFile(gate, "");
        program.signal(SIGTERM);
        const Ended ended = program.wait();
        return outcomeOf(ended, changeOfSettings(before));
    }

    /// The settings are whole, whether or not they were saved.
    std::string changeOfSettings(const std::string& before) {
        const std::string after = contentsOf(settingsPath());
        if (after == before) {
            return "the settings as before";
        }
        const auto keys = keysOf(after);
        EXPECT_THAT(keys, testing::IsSupersetOf(keysOf(before))) << after;
        EXPECT_THAT(after, HasSubstr("iFPS=12\n"));
        EXPECT_THAT(after, HasSubstr("other=7\n"));
        const bool isComplete = std::find(keys.begin(), keys.end(), "iMinute") != keys.end();
        return isComplete ? "the new settings" : "a part of the new settings";
    }

    /// What is new in the folder. Everything that was there is unchanged; new frames and movies are
    /// whole.
    std::string newInFolder(const Files& before) {
        const Files after = filesIn(folder);
        for (const auto& [name, contents] : before) {
            EXPECT_TRUE(after.contains(name) && after.at(name) == contents) << name;
        }
        int frames = 0;
        std::string text;
        for (const auto& [name, contents] : after) {
            const std::string path = folder + "/" + name;
            if (before.contains(name)) {
                continue;
            }
            if (name.ends_with(".png")) {
                EXPECT_TRUE(readFrame(path)) << name;
                ++frames;
            } else if (name.ends_with(".mov")) {
                text += (text.empty() ? "" : ", ") + withoutStamps(name) + " (" +
                        std::to_string(movieFacts(path).times.size()) + " frames)";
            } else {
                text += (text.empty() ? "" : ", ") + std::string("hidden ") + withoutStamps(name);
            }
        }
        if (frames > 0) {
            text += (text.empty() ? "" : ", ") + std::to_string(frames) +
                    (frames == 1 ? " frame" : " frames");
        }
        return text.empty() ? "nothing" : text;
    }

    static std::string withoutStamps(const std::string& text) {
        static const std::regex frame(R"(\d\d-\d\d-\d\d-\d\d-\d\d-\d\d)");
        static const std::regex movie(R"(\d{8,9}-\d{6})");
        return std::regex_replace(std::regex_replace(text, frame, "STAMP"), movie, "STAMP");
    }

    /// Standard error without what differs between runs and what every run writes. Whether frames
    /// are refused between a failed write and the end of the movie depends on the time.
    std::string seen(const Ended& ended) const {
        std::string text = replaceAll(ended.errors, folder, "FOLDER");
        text = replaceAll(replaceAll(text, home, "HOME"), work.path(), "WORK");
        for (const int number : {EACCES, EAGAIN, EDQUOT, EINTR, EINVAL, EIO, EMFILE, ENOENT, ENOMEM,
                                 ENOSPC, EPERM, EROFS}) {
            text = replaceAll(text, std::generic_category().message(number), "*reason*");
        }
        // Of Qt without a display.
        constexpr std::array<const char*, 3> noise{"QStandardPaths: wrong permissions",
                                                   "This plugin does not support",
                                                   "QObject::connect: No such signal"};
        std::istringstream lines(withoutStamps(text));
        std::vector<std::string> different;
        for (std::string line; std::getline(lines, line);) {
            const bool isUsual =
                line.empty() || line == "( t = 1 s )" || line == "finished writing" ||
                line.starts_with("moviePath=") || line.find("frame.png") != std::string::npos ||
                line.find("buffer with error: Error Domain=NSPOSIXErrorDomain") !=
                    std::string::npos ||
                std::any_of(noise.begin(), noise.end(),
                            [&](const char* each) { return line.starts_with(each); });
            if (!isUsual &&
                std::find(different.begin(), different.end(), line) == different.end()) {
                different.push_back(line);
            }
        }
        std::string result;
        for (const std::string& line : different) {
            result += (result.empty() ? "" : "\n") + line;
        }
        return result.empty() ? "nothing" : result;
    }

    FaultOutcome outcomeOf(const Ended& ended, const std::string& disk) const {
        EXPECT_THAT(ended.status, Ge(0)) << "A signal ended the program.\n" << ended.errors;
        EXPECT_NE(contentsOf(faultLog), "") << "No call failed.";
        return {seen(ended), ended.status, disk};
    }

    const std::string faultLog = work / "faults";
};

TEST_P(FaultMatrix, EndsAsTheTableSays) {
    const FaultOutcome outcome = runScene();
    outcomes()[GetParam().name()] = outcome;
    if (writesTable()) {
        return;
    }
    const auto expected = outcomeInTables(contentsOf(VISTRANE_RELIABILITY), GetParam());
    ASSERT_TRUE(expected) << "The table has no such cell. It is:\n"
                          << outcome.seen << "\n"
                          << outcome.status << "\n"
                          << outcome.disk;
    EXPECT_EQ(outcome.seen, expected->seen);
    EXPECT_EQ(outcome.status, expected->status);
    EXPECT_EQ(outcome.disk, expected->disk);
}

std::vector<FaultCell> cellsThatAre(bool isCommon) {
    std::vector<FaultCell> cells = faultCells();
    std::erase_if(cells, [&](const FaultCell& each) { return each.isCommon != isCommon; });
    return cells;
}

std::string nameOf(const testing::TestParamInfo<FaultCell>& info) {
    return info.param.name();
}

INSTANTIATE_TEST_SUITE_P(Common, FaultMatrix, testing::ValuesIn(cellsThatAre(true)), nameOf);
INSTANTIATE_TEST_SUITE_P(Other, FaultMatrix, testing::ValuesIn(cellsThatAre(false)), nameOf);

TEST(FaultTable, HasEveryCell) {
    const std::string document = contentsOf(VISTRANE_RELIABILITY);
    if (writesTable()) {
        GTEST_SKIP() << "The table is being generated.";
    }
    for (const FaultCell& cell : faultCells()) {
        EXPECT_TRUE(outcomeInTables(document, cell)) << cell.name();
    }
}

/// Writes the table at the end of a run. Cells that did not run keep their outcomes.
class TableWriter : public testing::Environment {
public:
    void TearDown() override {
        if (!writesTable()) {
            return;
        }
        const std::string before = contentsOf(VISTRANE_RELIABILITY);
        std::map<std::string, FaultOutcome> all = outcomes();
        for (const FaultCell& cell : faultCells()) {
            const auto known = outcomeInTables(before, cell);
            if (!all.contains(cell.name()) && known) {
                all[cell.name()] = *known;
            }
        }
        const auto document = withTables(before, faultTables(all));
        ASSERT_TRUE(document) << "The document has no markers.";
        writeFile(VISTRANE_RELIABILITY, *document);
    }
};

const auto* const tableWriter = testing::AddGlobalTestEnvironment(new TableWriter);

} // namespace
} // namespace vistrane
