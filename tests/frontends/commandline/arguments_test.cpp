#include "frontends/commandline/Arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

template <typename T>
T parsedAs(const std::vector<std::string>& arguments) {
    const ParsedArguments parsed = parseArguments(arguments);
    EXPECT_TRUE(parsed.command) << parsed.error;
    EXPECT_TRUE(std::holds_alternative<T>(*parsed.command));
    return std::get<T>(*parsed.command);
}

std::string errorOf(const std::vector<std::string>& arguments) {
    const ParsedArguments parsed = parseArguments(arguments);
    EXPECT_FALSE(parsed.command);
    return parsed.error;
}

TEST(Arguments, NoneOpenTheWindow) {
    const auto command = parsedAs<WindowCommand>({});
    EXPECT_FALSE(command.folder);
    EXPECT_FALSE(command.demoCamera);
}

TEST(Arguments, WhatIsNoCommandIsAFolderForTheWindow) {
    EXPECT_EQ(parsedAs<WindowCommand>({"a folder"}).folder, "a folder");
    EXPECT_EQ(parsedAs<WindowCommand>({"./demo"}).folder, "./demo");
    EXPECT_EQ(parsedAs<WindowCommand>({"--", "--folder"}).folder, "--folder");
    parsedAs<DemoCommand>({"demo"});
}

TEST(Arguments, TheWindowTakesTheDemoCamera) {
    EXPECT_TRUE(parsedAs<WindowCommand>({"--demo-camera"}).demoCamera);
    const auto command = parsedAs<WindowCommand>({"--demo-camera", "f"});
    EXPECT_TRUE(command.demoCamera);
    EXPECT_EQ(command.folder, "f");
    EXPECT_TRUE(parsedAs<WindowCommand>({"f", "--demo-camera"}).demoCamera);
}

TEST(Arguments, TheWindowTakesNothingElse) {
    EXPECT_THAT(errorOf({"a", "b"}), HasSubstr("'b'"));
    EXPECT_THAT(errorOf({""}), HasSubstr("folder is missing"));
    EXPECT_THAT(errorOf({"--fps"}), HasSubstr("'--fps'"));
}

TEST(Arguments, HelpWinsOverEverything) {
    parsedAs<HelpCommand>({"--help"});
    parsedAs<HelpCommand>({"capture", "--help"});
}

TEST(Arguments, VersionStandsAlone) {
    parsedAs<VersionCommand>({"--version"});
    EXPECT_THAT(errorOf({"--version", "x"}), HasSubstr("alone"));
}

TEST(Arguments, DevicesTakesTheDemoCamera) {
    EXPECT_FALSE(parsedAs<DevicesCommand>({"devices"}).demoCamera);
    EXPECT_TRUE(parsedAs<DevicesCommand>({"devices", "--demo-camera"}).demoCamera);
    EXPECT_THAT(errorOf({"devices", "x"}), HasSubstr("too many"));
}

TEST(Arguments, FramesTakesOneFolder) {
    const auto command = parsedAs<FramesCommand>({"frames", "--null", "a b"});
    EXPECT_EQ(command.folder, "a b");
    EXPECT_TRUE(command.endsWithNul);
    EXPECT_FALSE(parsedAs<FramesCommand>({"frames", "f"}).endsWithNul);
    EXPECT_THAT(errorOf({"frames"}), HasSubstr("folder is missing"));
    EXPECT_THAT(errorOf({"frames", ""}), HasSubstr("folder is missing"));
    EXPECT_THAT(errorOf({"frames", "a", "b"}), HasSubstr("'b'"));
    EXPECT_THAT(errorOf({"frames", "f", "--null=1"}), HasSubstr("--null"));
}

TEST(Arguments, TwoDashesEndTheOptions) {
    EXPECT_EQ(parsedAs<FramesCommand>({"frames", "--", "--null"}).folder, "--null");
}

TEST(Arguments, CompileHasItsDefaults) {
    const auto command = parsedAs<CompileCommand>({"compile", "f"});
    EXPECT_EQ(command.movie.framesPerSecond, 30);
    EXPECT_EQ(command.movie.preset, "");
    EXPECT_FALSE(command.movie.rateFactor);
}

TEST(Arguments, CompileTakesMovieOptionsInAnyPlaceAndForm) {
    const auto command = parsedAs<CompileCommand>(
        {"compile", "--fps=60", "f", "--x264-preset", "medium", "--crf", "0"});
    EXPECT_EQ(command.folder, "f");
    EXPECT_EQ(command.movie.framesPerSecond, 60);
    EXPECT_EQ(command.movie.preset, "medium");
    EXPECT_EQ(command.movie.rateFactor, 0);
}

TEST(Arguments, TheRateHasTheSlidersRange) {
    EXPECT_EQ(parsedAs<CompileCommand>({"compile", "f", "--fps", "1"}).movie.framesPerSecond, 1);
    for (const char* bad : {"0", "61", "-1", "2.5", "x", "", "99999999999"}) {
        EXPECT_THAT(errorOf({"compile", "f", "--fps", bad}), HasSubstr("1 to 60")) << bad;
    }
}

TEST(Arguments, OptionsOutOfRangeAreRefused) {
    EXPECT_THAT(errorOf({"compile", "f", "--crf", "52"}), HasSubstr("0 to 51"));
    EXPECT_THAT(errorOf({"compile", "f", "--x264-preset", "warp"}), HasSubstr("'warp'"));
    EXPECT_THAT(errorOf({"compile", "f", "--crf"}), HasSubstr("needs a value"));
    EXPECT_THAT(errorOf({"compile", "f", "--bogus"}), HasSubstr("--bogus"));
}

TEST(Arguments, ShortenedOptionsAreRefused) {
    EXPECT_THAT(errorOf({"compile", "f", "--fp", "5"}), HasSubstr("'--fp'"));
    EXPECT_THAT(errorOf({"compile", "f", "--fp=5"}), HasSubstr("'--fp=5'"));
    EXPECT_THAT(errorOf({"frames", "--nul", "f"}), HasSubstr("'--nul'"));
    EXPECT_THAT(errorOf({"capture", "f", "--d", "d"}), HasSubstr("'--d'"));
    EXPECT_EQ(parsedAs<CaptureCommand>({"capture", "f", "--device", "--dev"}).device, "--dev");
    EXPECT_EQ(parsedAs<CaptureCommand>({"capture", "f", "--device=--d"}).device, "--d");
}

TEST(Arguments, CaptureNeedsADevice) {
    EXPECT_THAT(errorOf({"capture", "f"}), HasSubstr("--device"));
    EXPECT_THAT(errorOf({"capture", "--device", "d"}), HasSubstr("folder is missing"));
}

TEST(Arguments, CaptureTakesEverything) {
    const auto command =
        parsedAs<CaptureCommand>({"capture", "f", "--device", "Cam 1", "--interval", "1:02:3",
                                  "--count", "5", "--compile", "--fps", "12", "--demo-camera"});
    EXPECT_EQ(command.folder, "f");
    EXPECT_EQ(command.device, "Cam 1");
    EXPECT_THAT(*command.interval, ElementsAre("1", "02", "3"));
    EXPECT_EQ(command.count, 5);
    EXPECT_TRUE(command.compiles);
    EXPECT_EQ(command.movie.framesPerSecond, 12);
    EXPECT_TRUE(command.demoCamera);
}

TEST(Arguments, CaptureGoesOnForEverByDefault) {
    const auto command = parsedAs<CaptureCommand>({"capture", "f", "--device", "d"});
    EXPECT_FALSE(command.count);
    EXPECT_FALSE(command.interval);
    EXPECT_FALSE(command.compiles);
}

TEST(Arguments, MovieOptionsWithoutAMovieAreRefused) {
    EXPECT_THAT(errorOf({"capture", "f", "--device", "d", "--fps", "5"}), HasSubstr("--compile"));
}

TEST(Arguments, ACountOfNothingIsRefused) {
    EXPECT_THAT(errorOf({"capture", "f", "--device", "d", "--count", "0"}), HasSubstr("--count"));
}

TEST(Arguments, DemoTakesAFolderOrNone) {
    EXPECT_FALSE(parsedAs<DemoCommand>({"demo"}).folder);
    EXPECT_EQ(parsedAs<DemoCommand>({"demo", "f"}).folder, "f");
    EXPECT_THAT(errorOf({"demo", "a", "b"}), HasSubstr("too many"));
    EXPECT_THAT(errorOf({"demo", "--fps", "5"}), HasSubstr("--fps"));
}

TEST(IntervalArgument, ThreePartsGoIntoTheFieldsAsTheyStand) {
    EXPECT_THAT(*parseInterval("-5:75:abc"), ElementsAre("-5", "75", "abc"));
    EXPECT_THAT(*parseInterval("::"), ElementsAre("", "", ""));
}

TEST(IntervalArgument, PlainSecondsAreSplit) {
    EXPECT_THAT(*parseInterval("0"), ElementsAre("0", "0", "0"));
    EXPECT_THAT(*parseInterval("59"), ElementsAre("0", "0", "59"));
    EXPECT_THAT(*parseInterval("90"), ElementsAre("0", "1", "30"));
    EXPECT_THAT(*parseInterval("3599999"), ElementsAre("999", "59", "59"));
}

TEST(IntervalArgument, MoreSecondsThanTheLongestIntervalAreTheLongest) {
    for (const char* seconds : {"3600000", "99999999999", "99999999999999999999"}) {
        EXPECT_THAT(*parseInterval(seconds), ElementsAre("999", "59", "59")) << seconds;
    }
}

TEST(IntervalArgument, PlainSecondsAreReadAsAFieldReadsThem) {
    for (const char* text : {"90.5", "90s", "+90", " 90", "0090"}) {
        EXPECT_THAT(*parseInterval(text), ElementsAre("0", "1", "30")) << text;
    }
    EXPECT_THAT(*parseInterval("7x"), ElementsAre("0", "0", "7"));
}

TEST(IntervalArgument, WhatIsNotAboveZeroGoesIntoTheSecondsField) {
    for (const char* text : {"", "abc", "-5", "0x10", "-99999999999999999999"}) {
        EXPECT_THAT(*parseInterval(text), ElementsAre("0", "0", text)) << text;
    }
}

TEST(IntervalArgument, TwoOrFourPartsAreRefused) {
    EXPECT_FALSE(parseInterval("1:30"));
    EXPECT_FALSE(parseInterval("1:2:3:4"));
    EXPECT_THAT(errorOf({"capture", "f", "--device", "d", "--interval", "1:30"}),
                HasSubstr("'1:30'"));
}

TEST(HelpText, NamesEveryCommandAndOption) {
    for (const char* word : {"devices", "frames", "compile", "capture", "demo", "--null", "--fps",
                             "--x264-preset", "--crf", "--device", "--interval", "--count",
                             "--compile", "--demo-camera", "--help", "--version"}) {
        EXPECT_THAT(helpText(), HasSubstr(word));
    }
}

} // namespace
} // namespace vistrane
