#include <csignal>
#include <filesystem>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/support/SilentSocket.h"

namespace vistrane {
namespace {

using testing::HasSubstr;

/// The program in its window, without a display.
class WindowProgram : public CommandLineTest {
protected:
    WindowProgram() {
        options.environment["QT_QPA_PLATFORM"] = "offscreen";
        options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + work / "no bus";
        options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + work / "no bus";
        // Showing the newest frame fails with a message: then the launch is over.
        writeFile(folder + "/frame.png", "damage");
    }

    std::string settings() const { return contentsOf(home + "/.config/vistrane/settings"); }

    /// Opens the window with the folder and ends the program by that signal.
    Ended openAndEndBy(int signal) {
        Program program(command({folder}), options);
        EXPECT_TRUE(program.waitForError("frame.png"));
        program.signal(signal);
        return program.wait();
    }
};

TEST_F(WindowProgram, ItEndsInOrderAtASignal) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const Ended ended = openAndEndBy(signal);
        EXPECT_EQ(ended.status, 128 + signal);
        EXPECT_EQ(ended.output, "");
        // Saved at the end only.
        EXPECT_THAT(settings(), HasSubstr("iMinute=0\n"));
        std::filesystem::remove(home + "/.config/vistrane/settings");
    }
}

TEST_F(WindowProgram, AMessageBusThatHangsCostsALineOnly) {
    const SilentSocket silent;
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = silent.address();
    options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = silent.address();
    const Ended ended = openAndEndBy(SIGTERM);
    EXPECT_EQ(ended.status, 128 + SIGTERM);
    EXPECT_THAT(ended.errors, HasSubstr("message bus does not answer"));
    EXPECT_THAT(settings(), HasSubstr("iMinute=0\n"));
}

TEST_F(WindowProgram, ItsDescriptorsAreCloseOnExec) {
    Program program(command({folder, "--demo-camera"}), options);
    EXPECT_TRUE(program.waitForError("frame.png"));
    EXPECT_THAT(program.inheritable(), testing::IsEmpty());
    program.signal(SIGTERM);
    program.wait();
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
    const std::string first = settings();
    const auto replaced = [](std::string text, const std::string& part, const std::string& by) {
        EXPECT_THAT(text, HasSubstr(part));
        return text.replace(text.find(part), part.size(), by);
    };
    const std::string changed = replaced(first, "iFPS=30", "iFPS=12");
    // Without this line the file differs from what the next run has to save.
    writeFile(home + "/.config/vistrane/settings", replaced(changed, "iMinute=0\n", ""));
    openAndEndBy(SIGTERM);
    EXPECT_EQ(settings(), changed);
}

TEST_F(WindowProgram, DamagedSettingsAreSetAsideWithALine) {
    std::filesystem::create_directories(home + "/.config/vistrane");
    writeFile(home + "/.config/vistrane/settings", "damage");
    const Ended ended = openAndEndBy(SIGTERM);
    EXPECT_THAT(ended.errors, HasSubstr("damaged"));
    EXPECT_EQ(contentsOf(home + "/.config/vistrane/settings.damaged"), "damage");
    EXPECT_THAT(settings(), HasSubstr("iFPS=30\n"));
}

TEST_F(WindowProgram, ASettingsFolderThatCannotBeMadeCostsALineOnly) {
    writeFile(home + "/.config", "no folder");
    const Ended ended = openAndEndBy(SIGTERM);
    EXPECT_EQ(ended.status, 128 + SIGTERM);
    EXPECT_THAT(ended.errors, HasSubstr("cannot be read"));
}

} // namespace
} // namespace vistrane
