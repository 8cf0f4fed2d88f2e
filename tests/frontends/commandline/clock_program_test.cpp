#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Runs the program with the clock stopped at a given time.
class ClockProgram : public CommandLineTest {
protected:
    void SetUp() override {
        if (!frozenClock("2026-02-05 14:03:09")) {
            GTEST_SKIP() << "The clock cannot be set: faketime is missing, or a sanitizer is in.";
        }
    }

    Ended runAt(const std::string& time, const std::vector<std::string>& arguments) {
        const auto launcher = frozenClock(time);
        return launcher ? runIn(*launcher, arguments) : Ended{};
    }

    /// The name of the only frame of a capture at that time.
    std::string frameAt(const std::string& time, const std::string& locale) {
        options.environment["LC_ALL"] = locale;
        const std::string place = work.makeFolder(locale + time);
        const Ended ended = runAt(
            time, {"capture", place, "--demo-camera", "--device", "Demo Camera", "--count", "1"});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        const auto names = namesIn(place);
        return names.size() == 1 ? names.front() : "";
    }
};

TEST_F(ClockProgram, AMovieIsNamedByWeekYearMonthDayOfTheYearAndTime) {
    writeGreyFrame(folder + "/a.png", 50);
    writeGreyFrame(folder + "/b.png", 50);
    const std::vector<std::pair<std::string, std::string>> names = {
        {"2026-02-05 14:03:09", "20260236-140309.mov"},
        {"2026-04-10 00:00:00", "202604100-000000.mov"},
        {"2026-12-31 23:59:59", "202712365-235959.mov"}};
    options.environment["LC_ALL"] = "en_US.UTF-8";
    for (const auto& [time, name] : names) {
        const Ended ended = runAt(time, {"compile", folder});
        EXPECT_EQ(ended.output, folder + "/" + name + "\n");
        EXPECT_TRUE(std::filesystem::is_regular_file(folder + "/" + name)) << name;
    }
}

TEST_F(ClockProgram, AFrameIsNamedByTheWeekYearOfTheUsersLocale) {
    // In the US locale a week with any day of the new year is week 1, in the German locale only one
    // with at least four.
    EXPECT_EQ(frameAt("2026-12-30 12:34:56", "en_US.UTF-8"), "27-12-30-12-34-56.png");
    EXPECT_EQ(frameAt("2026-12-30 12:34:56", "de_DE.UTF-8"), "26-12-30-12-34-56.png");
    EXPECT_EQ(frameAt("2027-01-01 00:00:00", "en_US.UTF-8"), "27-01-01-00-00-00.png");
    EXPECT_EQ(frameAt("2027-01-01 00:00:00", "de_DE.UTF-8"), "26-01-01-00-00-00.png");
    EXPECT_EQ(frameAt("2026-03-07 14:05:09", "de_DE.UTF-8"), "26-03-07-14-05-09.png");
}

TEST_F(ClockProgram, TheUsersTimeZoneHolds) {
    options.environment["TZ"] = "Asia/Tokyo";
    // faketime reads its time as local too.
    EXPECT_EQ(frameAt("2026-03-07 14:05:09", "en_US.UTF-8"), "26-03-07-14-05-09.png");
}

TEST_F(ClockProgram, AMovieThatIsThereIsLeftAloneAfterOneAlert) {
    writeGreyFrame(folder + "/a.png", 50);
    writeGreyFrame(folder + "/b.png", 50);
    const std::string taken = folder + "/20260236-140309.mov";
    writeFile(taken, "somebody's movie");
    const auto before = namesIn(folder);
    const Ended ended = runAt("2026-02-05 14:03:09", {"compile", folder});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(count(ended.errors, "Vistran movie compiling error:\n"), 1U);
    EXPECT_EQ(count(ended.errors, "error creating AssetWriter: "), 1U);
    EXPECT_THAT(ended.errors, HasSubstr(taken));
    EXPECT_EQ(contentsOf(taken), "somebody's movie");
    EXPECT_EQ(namesIn(folder), before);
}

TEST_F(ClockProgram, OfTwoCompilesWithinOneSecondOneMakesTheMovie) {
    for (const char* name : {"/a.png", "/b.png", "/c.png"}) {
        writeGreyFrame(folder + name, 50);
    }
    const auto launcher = *frozenClock("2026-02-05 14:03:09");
    Program first(command({"compile", folder}, launcher), options);
    Program second(command({"compile", folder}, launcher), options);
    const std::vector<int> statuses{first.wait().status, second.wait().status};
    EXPECT_THAT(statuses, testing::UnorderedElementsAre(0, 1));
    EXPECT_THAT(namesIn(folder), ElementsAre("20260236-140309.mov", "a.png", "b.png", "c.png"));
    EXPECT_EQ(movieFacts(folder + "/20260236-140309.mov").times, frameTimes(3));
}

} // namespace
} // namespace vistrane
