#include <filesystem>

#include <csignal>

#include "tests/frontends/commandline/CommandLineTest.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The program in its window, on a display that nobody sees.
class WindowProgram : public CommandLineTest {
protected:
    WindowProgram() {
        options.environment["QT_QPA_PLATFORM"] = "offscreen";
        options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + work / "no bus";
        options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + work / "no bus";
        // The frame list shows its newest frame, and says that it cannot: the program is up.
        writeFile(folder + "/frame.png", "damage");
    }

    std::string settings() const { return contentsOf(home + "/.config/vistrane/settings"); }

    /// Opens the window with the folder, ends the program by that signal and returns how it ended.
    Ended openAndEndBy(int signal) {
        Program program(command({folder}), options);
        EXPECT_TRUE(program.waitForError("frame.png"));
        program.signal(signal);
        return program.wait();
    }
};

TEST_F(WindowProgram, SignalsEndItInOrder) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const Ended ended = openAndEndBy(signal);
        EXPECT_EQ(ended.status, 128 + signal);
        EXPECT_EQ(ended.output, "");
        // Written at the end only.
        EXPECT_THAT(settings(), HasSubstr("\"iMinute\" = 0\n"));
        std::filesystem::remove(home + "/.config/vistrane/settings");
    }
}

TEST_F(WindowProgram, TheFolderIsRememberedForTheNextTime) {
    openAndEndBy(SIGTERM);
    Program again(command({}), options);
    EXPECT_TRUE(again.waitForError("frame.png"));
    again.signal(SIGTERM);
    again.wait();
}

TEST_F(WindowProgram, ValuesComeBackAndAreSavedAgain) {
    openAndEndBy(SIGTERM);
    std::string text = settings();
    const std::string before = "\"iFPS\" = 30";
    text.replace(text.find(before), before.size(), "\"iFPS\" = 12");
    writeFile(home + "/.config/vistrane/settings", text);
    openAndEndBy(SIGTERM);
    EXPECT_EQ(settings(), text);
}

TEST_F(WindowProgram, DamagedSettingsAreSetAsideWithALine) {
    std::filesystem::create_directories(home + "/.config/vistrane");
    writeFile(home + "/.config/vistrane/settings", "damage");
    const Ended ended = openAndEndBy(SIGTERM);
    EXPECT_THAT(ended.errors, HasSubstr("damaged"));
    EXPECT_EQ(contentsOf(home + "/.config/vistrane/settings.damaged"), "damage");
    EXPECT_THAT(settings(), HasSubstr("\"iFPS\" = 30\n"));
}

TEST_F(WindowProgram, ASettingsFolderThatCannotBeMadeCostsALineOnly) {
    writeFile(home + "/.config", "no folder");
    const Ended ended = openAndEndBy(SIGTERM);
    EXPECT_EQ(ended.status, 128 + SIGTERM);
    EXPECT_THAT(ended.errors, HasSubstr("cannot be read"));
}

} // namespace
} // namespace vistrane
