#include "backends/qt/system/QtUserDefaults.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>
#include <thread>

#include <QLockFile>

#include <gmock/gmock.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;

void write(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// While it lives, no file can grow beyond 300 bytes: enough for a lock.
class FullDisk {
public:
    FullDisk() : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{300, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

/// Files are written with lengths of their own within a test: QSettings tells the states of a file
/// in one process apart by its length and the millisecond of its change.
class QtUserDefaultsTest : public ::testing::Test {
protected:
    QtUserDefaults open() { return openAt(path_); }
    QtUserDefaults openAt(const std::string& path) {
        return QtUserDefaults(path, [this](const std::string& line) { log_.push_back(line); });
    }
    static void saveHour(QtUserDefaults& defaults, NSInteger value) {
        defaults.setInteger(value, "iHour");
        defaults.synchronize();
    }

    WorkFolder folder_;
    const std::string path_ = folder_ / "settings";
    std::vector<std::string> log_;
};

TEST_F(QtUserDefaultsTest, RehearsedValuesAreSavedOnlyOnRequest) {
    QtUserDefaults defaults = open();
    saveHour(defaults, 1);
    defaults.setInteger(2, "iMinute");
    const std::string before = read(path_);
    defaults.rehearse([&] {
        defaults.setInteger(77, "iHour");
        defaults.synchronize();
    });
    EXPECT_EQ(read(path_), before);
    EXPECT_EQ(defaults.integerForKey("iHour"), 1);
    std::thread([&] { defaults.saveRemembered(); }).join();
    EXPECT_EQ(open().integerForKey("iHour"), 77);
    EXPECT_EQ(open().integerForKey("iMinute"), 2);
}

TEST_F(QtUserDefaultsTest, NothingIsWrittenBeforeSynchronize) {
    {
        QtUserDefaults defaults = open();
        defaults.setInteger(7, "iHour");
    }
    EXPECT_THAT(folder_.names(), IsEmpty());
    QtUserDefaults defaults = open();
    defaults.synchronize();
    EXPECT_THAT(folder_.names(), IsEmpty());
    saveHour(defaults, 7);
    EXPECT_EQ(read(path_), "[General]\niHour=7\n");
    EXPECT_THAT(folder_.names(), ElementsAre("settings"));
    EXPECT_THAT(log_, IsEmpty());
}

/// The permissions; 0 if there is nothing.
unsigned modeOf(const std::string& path) {
    struct stat facts {};
    return ::stat(path.c_str(), &facts) == 0 ? facts.st_mode & 0777U : 0U;
}

TEST_F(QtUserDefaultsTest, FoldersThatAreMissingAreMadeForItsUserOnly) {
    std::filesystem::create_directory(folder_ / "there");
    const unsigned before = modeOf(folder_ / "there");
    QtUserDefaults defaults = openAt(folder_ / "there/a/b/settings");
    saveHour(defaults, 7);
    EXPECT_EQ(openAt(folder_ / "there/a/b/settings").integerForKey("iHour"), 7);
    EXPECT_EQ(modeOf(folder_ / "there"), before);
    EXPECT_EQ(modeOf(folder_ / "there/a"), 0700U);
    EXPECT_EQ(modeOf(folder_ / "there/a/b"), 0700U);
}

TEST_F(QtUserDefaultsTest, OnlyItsUserMayReadTheFile) {
    QtUserDefaults defaults = open();
    saveHour(defaults, 7);
    EXPECT_EQ(modeOf(path_), 0600U);
    ::chmod(path_.c_str(), 0644);
    saveHour(defaults, 11);
    EXPECT_EQ(modeOf(path_), 0600U);
}

TEST_F(QtUserDefaultsTest, AnyBytesComeBack) {
    std::vector<std::uint8_t> bytes;
    for (int first = 0; first < 256; ++first) {
        for (const char second :
             {'\0', '0', 'f', '\n', '\r', '=', ')', '"', '\\', ';', ',', '\xff'}) {
            bytes.push_back(static_cast<std::uint8_t>(first));
            bytes.push_back(static_cast<std::uint8_t>(second));
        }
    }
    QtUserDefaults defaults = open();
    defaults.setObject(bytes, "iData");
    defaults.setObject({}, "empty");
    defaults.synchronize();
    EXPECT_THAT(open().objectForKey("iData"), Optional(bytes));
    EXPECT_THAT(open().objectForKey("empty"), Optional(IsEmpty()));
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(QtUserDefaultsTest, AValueThatCannotBeReadCostsNoOther) {
    for (const std::string line :
         {"iFPS=thirty", "iFPS=", "iFPS=1, 2", "iFPS=@Variant(\\0\\0\\0\\xff)", "iFPS=@Size(1 2)",
          "iFPS=@Invalid()", "iFPS=a, @Rect(1 2 3 4)", "iFPS=\"\\x40Variant(\\0)\"",
          // A list of 4.3 thousand million values.
          "iFPS=@Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xff)",
          "iFPS=\\x40Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xff)", "iFPS=@ByteArray(30",
          "iFPS=@ByteArray(30)", "; iFPS=30", "[x]\niFPS=3"}) {
        write(path_, "[General]\niHour=7\n" + line + "\n");
        const QtUserDefaults defaults = open();
        EXPECT_EQ(defaults.integerForKey("iFPS"), 0) << line;
        EXPECT_EQ(defaults.integerForKey("iHour"), 7) << line;
    }
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(QtUserDefaultsTest, OddTextsOfAnotherVersionSurviveASave) {
    // In Latin-1, the file's encoding.
    for (const std::string text : {"\v\v3#0", "3\x01\x02", "3;4", "3 = 4", "3\"\\", "3\xe9"}) {
        write(path_, "[General]\niHour=1\niFPS=\"" +
                         std::regex_replace(text, std::regex(R"(["\\])"), "\\$&") + "\"\n");
        QtUserDefaults defaults = open();
        EXPECT_EQ(defaults.integerForKey("iFPS"), 3) << text;
        saveHour(defaults, 7);
        EXPECT_EQ(open().integerForKey("iFPS"), 3) << read(path_);
    }
}

TEST_F(QtUserDefaultsTest, ADamagedFileIsSetAsideAndTheFirstSettingsAreUsed) {
    for (const std::string contents :
         {"no settings", "[General]\niHour=7\niFP", "[General\niHour=7\n",
          "[General]\niHour=7\n=3\n", "[General]\niFPS=\"30\niHour=7\n",
          "[General]\niFPS=30\\\niHour=7\n", "[General]\niHour=7\niHour=8\n",
          "Vistrane settings 1\n\"iHour\" = 7\n", "Vistrane settings 1\n\"iHour\" = 3.5\nend\n"}) {
        log_.clear();
        write(path_, contents);
        const QtUserDefaults defaults = open();
        EXPECT_EQ(defaults.integerForKey("iHour"), 0) << contents;
        EXPECT_THAT(log_, ElementsAre(HasSubstr("damaged"))) << contents;
        EXPECT_THAT(folder_.names(), ElementsAre("settings.damaged")) << contents;
        EXPECT_EQ(read(path_ + ".damaged"), contents);
        std::filesystem::remove(path_ + ".damaged");
    }
}

TEST_F(QtUserDefaultsTest, ASecondDamagedFileLeavesTheFirstOne) {
    for (const std::string contents : {"damage", "more damage", "yet more damage"}) {
        write(path_, contents);
        QtUserDefaults defaults = open();
        saveHour(defaults, 3);
        EXPECT_EQ(open().integerForKey("iHour"), 3);
    }
    EXPECT_EQ(read(path_ + ".damaged"), "damage");
    EXPECT_EQ(read(path_ + ".damaged-2"), "more damage");
    EXPECT_EQ(read(path_ + ".damaged-3"), "yet more damage");
}

TEST_F(QtUserDefaultsTest, AFileOfTheFirstFormatIsReadAndReplaced) {
    write(path_, "Vistrane settings 1\n"
                 "\"iData\" = <56 74 ff>\n"
                 "\"iFPS\" = 30\n"
                 "\"iHour\" = -1\n"
                 "\"nothing\" = <>\n"
                 "end\n");
    {
        QtUserDefaults defaults = open();
        EXPECT_EQ(defaults.integerForKey("iFPS"), 30);
        defaults.setInteger(24, "iFPS");
        defaults.synchronize();
    }
    EXPECT_THAT(read(path_), HasSubstr("[General]\n"));
    const QtUserDefaults defaults = open();
    EXPECT_EQ(defaults.integerForKey("iFPS"), 24);
    EXPECT_EQ(defaults.integerForKey("iHour"), -1);
    EXPECT_THAT(defaults.objectForKey("iData"), Optional(ElementsAre(0x56, 0x74, 0xff)));
    EXPECT_THAT(defaults.objectForKey("nothing"), Optional(IsEmpty()));
    EXPECT_THAT(folder_.names(), ElementsAre("settings"));
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(QtUserDefaultsTest, WhatCannotBeReadStaysAsItIsAndCostsALogLineAndNoMore) {
    // A folder, and a file for a folder, cannot be read whoever runs the test.
    std::filesystem::create_directory(path_);
    write(folder_ / "file", "x");
    for (const std::string& path : {path_, folder_ / "file/settings"}) {
        log_.clear();
        QtUserDefaults defaults = openAt(path);
        saveHour(defaults, 7);
        EXPECT_EQ(defaults.integerForKey("iHour"), 7);
        EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be read")));
    }
    EXPECT_TRUE(std::filesystem::is_directory(path_));
    EXPECT_EQ(read(folder_ / "file"), "x");
}

TEST_F(QtUserDefaultsTest, NeitherAFileThatIsFarTooLongNorAPipeIsRead) {
    write(path_, std::string((1 << 16) + 1, '\n'));
    open();
    std::filesystem::remove(path_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    open();
    EXPECT_THAT(log_, AllOf(SizeIs(2), Each(HasSubstr("cannot be read"))));
}

TEST_F(QtUserDefaultsTest, ValuesWithinValuesDoNotExhaustTheStack) {
    std::string text = "[General]\niFPS=@Variant(";
    const std::string level = "\\0\\0\\0\\t\\0\\0\\0\\x1"; // A list of one value.
    while (text.size() + level.size() + 2 < 1 << 16) {
        text += level;
    }
    write(path_, text + ")\n");
    EXPECT_EQ(open().integerForKey("iFPS"), 0);
}

TEST_F(QtUserDefaultsTest, WhatCannotBeWrittenIsLoggedOnceAndKept) {
    QtUserDefaults defaults = open();
    std::filesystem::create_directory(path_);
    saveHour(defaults, 7);
    defaults.synchronize();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be written")));
    std::filesystem::remove(path_);
    defaults.synchronize();
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(QtUserDefaultsTest, AFullDiskLeavesTheFileAsItIs) {
    const std::string other = "other=" + std::string(1000, 'x') + "\n";
    const std::string before = "[General]\niFPS=30\niHour=1\n" + other;
    write(path_, before);
    QtUserDefaults defaults = open();
    {
        const FullDisk disk;
        saveHour(defaults, 12);
        defaults.setInteger(5, "iSecond");
        defaults.synchronize();
    }
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be written")));
    EXPECT_EQ(read(path_), before);
    EXPECT_THAT(folder_.names(), ElementsAre("settings"));
    defaults.synchronize();
    EXPECT_EQ(read(path_), "[General]\niFPS=30\niHour=12\niSecond=5\n" + other);
}

TEST_F(QtUserDefaultsTest, AFileThatWasRemovedWhileTheDiskWasFullIsWrittenWholeLater) {
    const std::string other = "other=" + std::string(1000, 'x') + "\n";
    write(path_, "[General]\niFPS=30\n" + other);
    QtUserDefaults defaults = open();
    std::filesystem::remove(path_);
    {
        const FullDisk disk;
        saveHour(defaults, 7);
    }
    defaults.synchronize();
    EXPECT_EQ(read(path_), "[General]\niFPS=30\niHour=7\n" + other);
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be written")));
    EXPECT_THAT(folder_.names(), ElementsAre("settings"));
}

TEST_F(QtUserDefaultsTest, WhatAKilledSaveLeftIsRemovedByALaterSave) {
    const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    for (const char* const name : {"settings.new-killed", "settings.old", "other.new-killed"}) {
        write(folder_.makeFolder(name) + "/settings", "remains");
        std::filesystem::last_write_time(folder_ / name, longAgo);
    }
    folder_.makeFolder("settings.new-saving");
    std::filesystem::create_symlink(folder_ / "settings.old", folder_ / "settings.new-link");
    QtUserDefaults defaults = open();
    saveHour(defaults, 5);
    EXPECT_THAT(folder_.names(), ElementsAre("other.new-killed", "settings", "settings.new-link",
                                             "settings.new-saving", "settings.old"));
    EXPECT_EQ(read(folder_ / "settings.old/settings"), "remains");
}

TEST_F(QtUserDefaultsTest, ALinkStaysALink) {
    std::filesystem::create_directory(folder_ / "elsewhere");
    std::filesystem::create_symlink("elsewhere/real", path_);
    for (const std::string contents : {"", "[General]\niHour=1\n"}) {
        if (!contents.empty()) {
            write(folder_ / "elsewhere/real", contents);
        }
        QtUserDefaults defaults = open();
        saveHour(defaults, 2);
        EXPECT_TRUE(std::filesystem::is_symlink(path_));
        EXPECT_EQ(read(folder_ / "elsewhere/real"), "[General]\niHour=2\n");
    }
    EXPECT_THAT(folder_.names(), ElementsAre("elsewhere", "settings"));
}

TEST_F(QtUserDefaultsTest, ALinkToAForeignFileIsSetAsideAndTheFileStays) {
    write(folder_ / "diary", "damage");
    std::filesystem::create_symlink("diary", path_);
    QtUserDefaults defaults = open();
    saveHour(defaults, 2);
    EXPECT_EQ(read(folder_ / "diary"), "damage");
    EXPECT_TRUE(std::filesystem::is_symlink(path_ + ".damaged"));
    EXPECT_EQ(read(path_), "[General]\niHour=2\n");
    EXPECT_THAT(folder_.names(), ElementsAre("diary", "settings", "settings.damaged"));
}

/// The first session: nothing has read settings before the handler is registered.
TEST(QtUserDefaultsAtTheEnd, AreSavedByAHandlerOfExit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static QtUserDefaults* defaults = nullptr;
    static std::string path;
    const WorkFolder folder;
    const auto saveInExit = [&] {
        ::alarm(60);
        path = folder / "settings";
        defaults = new QtUserDefaults(path, [](const std::string&) {});
        std::atexit([] {
            defaults->setInteger(7, "iHour");
            defaults->synchronize();
            const QtUserDefaults again(path, [](const std::string&) {});
            std::_Exit(again.integerForKey("iHour") == 7 ? 0 : 1);
        });
        defaults->setInteger(5, "iHour");
        defaults->synchronize();
        defaults->setInteger(6, "iHour");
        defaults->synchronize();
        std::exit(2);
    };
    EXPECT_EXIT(saveInExit(), testing::ExitedWithCode(0), "");
}

TEST_F(QtUserDefaultsTest, TwoInstancesKeepWhatTheOtherOneSaved) {
    QtUserDefaults one = open();
    QtUserDefaults other = open();
    one.setObject({1, 2}, "iData");
    one.synchronize();
    other.setInteger(24, "iFPS");
    other.synchronize();
    saveHour(one, 7);
    const QtUserDefaults later = open();
    EXPECT_THAT(later.objectForKey("iData"), Optional(ElementsAre(1, 2)));
    EXPECT_EQ(later.integerForKey("iFPS"), 24);
    EXPECT_EQ(later.integerForKey("iHour"), 7);
    EXPECT_THAT(folder_.names(), ElementsAre("settings"));
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(QtUserDefaultsTest, OfTwoInstancesThatSetAKeyTheLaterOneWins) {
    write(path_, "[General]\niFPS=30\n");
    QtUserDefaults one = open();
    QtUserDefaults other = open();
    other.setInteger(24, "iFPS");
    other.setObject({2, 2}, "iData");
    other.synchronize();
    // Also when it is what that instance had read.
    one.setInteger(30, "iFPS");
    one.setObject({1}, "iData");
    one.synchronize();
    EXPECT_EQ(open().integerForKey("iFPS"), 30);
    EXPECT_THAT(open().objectForKey("iData"), Optional(ElementsAre(1)));
}

TEST_F(QtUserDefaultsTest, AFileThatHoldsEverythingAlreadyIsNotReplaced) {
    write(path_, "; by hand\n[General]\niFPS=30\n");
    QtUserDefaults defaults = open();
    defaults.setInteger(30, "iFPS");
    defaults.synchronize();
    EXPECT_THAT(read(path_), HasSubstr("; by hand"));
}

TEST_F(QtUserDefaultsTest, AFileThatWasDamagedMeanwhileIsSetAsideAndNothingOfItsOwnIsLost) {
    write(path_, "[General]\niFPS=30\n");
    QtUserDefaults defaults = open();
    defaults.setInteger(7, "iHour");
    write(path_, "damage");
    defaults.synchronize();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("saves its own")));
    EXPECT_EQ(read(path_ + ".damaged"), "damage");
    EXPECT_EQ(open().integerForKey("iFPS"), 30);
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(QtUserDefaultsTest, AFileThatWasRemovedMeanwhileIsWrittenWhole) {
    write(path_, "[General]\niFPS=30\n");
    QtUserDefaults defaults = open();
    std::filesystem::remove(path_);
    saveHour(defaults, 7);
    EXPECT_EQ(read(path_), "[General]\niFPS=30\niHour=7\n");
}

TEST_F(QtUserDefaultsTest, TheLockOfACrashedInstanceIsIgnored) {
    // The number of no process, as the lock's owner.
    write(path_ + ".lock", "4194305\nvistrane\n\n\n\n");
    QtUserDefaults defaults = open();
    saveHour(defaults, 7);
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(QtUserDefaultsTest, AnInstanceThatWasStoppedWhileItSavedDelaysNoOther) {
    QLockFile lockOfTheStopped(QString::fromStdString(path_ + ".lock"));
    ASSERT_TRUE(lockOfTheStopped.lock());
    QtUserDefaults defaults = open();
    saveHour(defaults, 7);
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(QtUserDefaultsTest, TheSystemAnswersItsOwnKeys) {
    write(path_, "[General]\nAppleInterfaceStyle=Dark\n");
    QtUserDefaults defaults = open();
    std::optional<std::string> answer;
    defaults.setSystemString("AppleInterfaceStyle", [&] { return answer; });
    EXPECT_EQ(defaults.stringForKey("AppleInterfaceStyle"), std::nullopt);
    answer = "Dark";
    EXPECT_EQ(defaults.stringForKey("AppleInterfaceStyle"), "Dark");
}

TEST_F(QtUserDefaultsTest, NoBytesAreLostWhateverTheFileHolds) {
    const std::string samples[] = {
        "[General]\niData=@ByteArray(Vtbm\\x1/f)\niFPS=30\niHour=\"a,b\"\n",
        "Vistrane settings 1\n\"iData\" = <76 02>\n\"iFPS\" = 30\nend\n"};
    const std::string pieces[] = {
        "\n",   "=",     "\"",   "\\", "[", "]", ";", "@Variant(", ")", "\r", std::string(1, '\0'),
        "\xff", "end\n", "%U12", "/"};
    std::mt19937 random(20261122);
    for (int round = 0; round < 1500; ++round) {
        std::string text = samples[random() % std::size(samples)];
        for (auto left = 1 + random() % 4; left > 0; --left) {
            const std::size_t at = random() % (text.size() + 1);
            switch (random() % 3) {
            case 0:
                text.resize(at);
                break;
            case 1:
                text.insert(at, pieces[random() % std::size(pieces)]);
                break;
            default:
                text.replace(at, random() % 8, 1, static_cast<char>(random()));
            }
        }
        const std::string path = folder_ / std::to_string(round);
        write(path, text);
        NSInteger before = 0;
        {
            QtUserDefaults defaults = openAt(path);
            const bool isAside = std::filesystem::exists(path + ".damaged");
            EXPECT_EQ(read(isAside ? path + ".damaged" : path), text);
            before = defaults.integerForKey("iFPS");
            if (round % 10 != 0) { // Saving waits for the disk.
                continue;
            }
            defaults.setInteger(7, "new");
            defaults.synchronize();
        }
        const QtUserDefaults later = openAt(path);
        EXPECT_EQ(later.integerForKey("new"), 7) << text;
        EXPECT_EQ(later.integerForKey("iFPS"), before) << text;
    }
}

} // namespace
} // namespace vistrane
