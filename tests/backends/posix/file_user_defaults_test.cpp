#include "backends/posix/FileUserDefaults.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "backends/posix/settings_text.h"
#include "tests/backends/posix/TemporaryFolder.h"
#include "tests/contract/UserDefaultsContract.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

void write(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class FileUserDefaultsTest : public ::testing::Test {
protected:
    FileUserDefaults open() {
        return FileUserDefaults(path_, [this](const std::string& line) { log_.push_back(line); });
    }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            result.push_back(entry.path().filename().string());
        }
        std::sort(result.begin(), result.end());
        return result;
    }

    TemporaryFolder folder_;
    const std::string path_ = folder_ / "settings";
    std::vector<std::string> log_;
};

TEST_F(FileUserDefaultsTest, NothingIsWrittenBeforeSynchronize) {
    FileUserDefaults defaults = open();
    defaults.setInteger(7, "iHour");
    EXPECT_THAT(names(), IsEmpty());
    defaults.synchronize();
    EXPECT_THAT(names(), ElementsAre("settings"));
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(FileUserDefaultsTest, NothingIsWrittenWithoutAChange) {
    open().synchronize();
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(FileUserDefaultsTest, ItsFolderIsMade) {
    FileUserDefaults defaults(folder_ / "a/b/settings", [](const std::string&) {});
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    EXPECT_TRUE(std::filesystem::exists(folder_ / "a/b/settings"));
}

TEST_F(FileUserDefaultsTest, OnlyItsUserMayReadTheFile) {
    FileUserDefaults defaults = open();
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    struct stat facts {};
    ASSERT_EQ(::stat(path_.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, 0600U);
}

TEST_F(FileUserDefaultsTest, ADamagedFileIsSetAsideAndTheFirstSettingsAreUsed) {
    for (const std::string contents : {"", "no settings", "Vistrane settings 1\n\"iHour\" = 7\n"}) {
        log_.clear();
        write(path_, contents);
        FileUserDefaults defaults = open();
        EXPECT_EQ(defaults.integerForKey("iHour"), 0);
        EXPECT_THAT(log_, ElementsAre(HasSubstr("damaged")));
        EXPECT_THAT(names(), ElementsAre("settings.damaged"));
        EXPECT_EQ(read(path_ + ".damaged"), contents);
    }
}

TEST_F(FileUserDefaultsTest, WhatIsSetAfterDamageIsKept) {
    write(path_, "damage");
    {
        FileUserDefaults defaults = open();
        defaults.setInteger(3, "iHour");
        defaults.synchronize();
    }
    EXPECT_EQ(open().integerForKey("iHour"), 3);
    EXPECT_EQ(read(path_ + ".damaged"), "damage");
}

TEST_F(FileUserDefaultsTest, AFileThatCannotBeReadStaysAsItIs) {
    // A folder, for instance, whoever runs the test.
    std::filesystem::create_directory(path_);
    FileUserDefaults defaults = open();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be read")));
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    EXPECT_EQ(defaults.integerForKey("iHour"), 7);
    EXPECT_TRUE(std::filesystem::is_directory(path_));
    EXPECT_EQ(log_.size(), 1U);
}

TEST_F(FileUserDefaultsTest, AFileThatIsFarTooLongIsNotRead) {
    write(path_, std::string((1 << 20) + 1, 'x'));
    open();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(FileUserDefaultsTest, APipeHoldsNobodyUp) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    open();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(FileUserDefaultsTest, AFolderThatCannotBeMadeCostsALogLineAndNoMore) {
    write(folder_ / "file", "x");
    FileUserDefaults defaults(folder_ / "file/settings",
                              [this](const std::string& line) { log_.push_back(line); });
    log_.clear();
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    EXPECT_EQ(defaults.integerForKey("iHour"), 7);
    EXPECT_EQ(read(folder_ / "file"), "x");
}

TEST_F(FileUserDefaultsTest, WhatCannotBeWrittenIsToldOnceAndKept) {
    FileUserDefaults defaults = open();
    std::filesystem::create_directory(path_);
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    defaults.synchronize();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("cannot be written")));
    std::filesystem::remove(path_);
    defaults.synchronize();
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(FileUserDefaultsTest, ALinkStaysALink) {
    std::filesystem::create_directory(folder_ / "elsewhere");
    write(folder_ / "elsewhere/real", settingsText({{"iHour", std::int64_t{1}}}));
    std::filesystem::create_symlink("elsewhere/real", path_);
    FileUserDefaults defaults = open();
    EXPECT_EQ(defaults.integerForKey("iHour"), 1);
    defaults.setInteger(2, "iHour");
    defaults.synchronize();
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_THAT(read(folder_ / "elsewhere/real"), HasSubstr("\"iHour\" = 2"));
}

TEST_F(FileUserDefaultsTest, TwoInstancesKeepWhatTheOtherOneSaved) {
    FileUserDefaults one = open();
    FileUserDefaults other = open();
    one.setObject({1, 2}, "iData");
    one.synchronize();
    other.setInteger(24, "iFPS");
    other.synchronize();
    one.setInteger(7, "iHour");
    one.synchronize();
    const FileUserDefaults later = open();
    EXPECT_THAT(later.objectForKey("iData"), Optional(ElementsAre(1, 2)));
    EXPECT_EQ(later.integerForKey("iFPS"), 24);
    EXPECT_EQ(later.integerForKey("iHour"), 7);
    EXPECT_THAT(names(), ElementsAre("settings"));
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(FileUserDefaultsTest, OfTwoInstancesThatSetAKeyTheLaterOneWins) {
    FileUserDefaults one = open();
    FileUserDefaults other = open();
    one.setInteger(12, "iFPS");
    one.setObject({1}, "iData");
    other.setInteger(24, "iFPS");
    other.setObject({2}, "iData");
    other.synchronize();
    one.synchronize();
    EXPECT_EQ(open().integerForKey("iFPS"), 12);
    EXPECT_THAT(open().objectForKey("iData"), Optional(ElementsAre(1)));
    // The same folder, chosen once more.
    other.setObject({2}, "iData");
    other.synchronize();
    EXPECT_THAT(open().objectForKey("iData"), Optional(ElementsAre(2)));
}

TEST_F(FileUserDefaultsTest, ANumberThatIsSetToWhatItIsReplacesAnotherInstancesOne) {
    write(path_, settingsText({{"iFPS", std::int64_t{30}}, {"iHour", std::int64_t{0}}}));
    FileUserDefaults one = open();
    FileUserDefaults other = open();
    other.setInteger(24, "iFPS");
    other.synchronize();
    one.setInteger(30, "iFPS");
    one.synchronize();
    EXPECT_EQ(open().integerForKey("iFPS"), 30);
}

TEST_F(FileUserDefaultsTest, AFileThatHoldsEverythingAlreadyIsNotReplaced) {
    write(path_, settingsText({{"iFPS", std::int64_t{30}}}));
    FileUserDefaults defaults = open();
    std::filesystem::create_hard_link(path_, folder_ / "same");
    defaults.setInteger(30, "iFPS");
    defaults.synchronize();
    EXPECT_TRUE(std::filesystem::equivalent(path_, folder_ / "same"));
    defaults.setInteger(24, "iFPS");
    defaults.synchronize();
    EXPECT_FALSE(std::filesystem::equivalent(path_, folder_ / "same"));
}

TEST_F(FileUserDefaultsTest, AFileThatWasDamagedMeanwhileIsSetAsideAndNothingOfItsOwnIsLost) {
    write(path_, settingsText({{"iFPS", std::int64_t{30}}}));
    FileUserDefaults defaults = open();
    defaults.setInteger(7, "iHour");
    write(path_, "damage");
    defaults.synchronize();
    EXPECT_THAT(log_, ElementsAre(HasSubstr("saves its own")));
    EXPECT_EQ(read(path_ + ".damaged"), "damage");
    EXPECT_EQ(open().integerForKey("iFPS"), 30);
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(FileUserDefaultsTest, AFileThatWasTakenAwayMeanwhileIsWrittenWhole) {
    write(path_, settingsText({{"iFPS", std::int64_t{30}}}));
    FileUserDefaults defaults = open();
    std::filesystem::remove(path_);
    defaults.setInteger(30, "iFPS");
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    EXPECT_EQ(open().integerForKey("iFPS"), 30);
    EXPECT_EQ(open().integerForKey("iHour"), 7);
}

TEST_F(FileUserDefaultsTest, ALockThatIsNeverGivenBackHoldsNobodyUp) {
    const int folder = ::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(folder, LOCK_EX), 0);
    FileUserDefaults defaults = open();
    defaults.setInteger(7, "iHour");
    defaults.synchronize();
    EXPECT_EQ(open().integerForKey("iHour"), 7);
    ::close(folder);
}

TEST_F(FileUserDefaultsTest, TheSystemAnswersItsOwnKeys) {
    write(path_, settingsText({{"AppleInterfaceStyle", std::string("Dark")}}));
    FileUserDefaults defaults = open();
    std::optional<std::string> answer;
    defaults.setSystemString("AppleInterfaceStyle", [&] { return answer; });
    EXPECT_EQ(defaults.stringForKey("AppleInterfaceStyle"), std::nullopt);
    answer = "Dark";
    EXPECT_EQ(defaults.stringForKey("AppleInterfaceStyle"), "Dark");
}

/// Settings in a file for the contract suite.
class FileSettingsBackend {
public:
    NSUserDefaults& userDefaults() { return *defaults_; }
    void storeText(const std::string& text, const std::string& key) {
        write(path_, settingsText({{key, text}}));
        reopen();
    }
    bool reopen() {
        defaults_.emplace(path_, [](const std::string&) {});
        return true;
    }

private:
    TemporaryFolder folder_;
    const std::string path_ = folder_ / "settings";
    std::optional<FileUserDefaults> defaults_{std::in_place, path_, [](const std::string&) {}};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(File, UserDefaultsContract, FileSettingsBackend, contract::Names);

} // namespace vistrane
