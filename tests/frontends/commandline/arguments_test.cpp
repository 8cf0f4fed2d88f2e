#include "frontends/commandline/Arguments.h"

#include <chrono>
#include <ctime>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

using Arguments = std::vector<std::string>;

template <typename T>
T parsedAs(const Arguments& arguments) {
    const ParsedArguments parsed = parseArguments(arguments);
    EXPECT_TRUE(parsed.command) << parsed.error;
    EXPECT_TRUE(std::holds_alternative<T>(*parsed.command));
    return std::get<T>(*parsed.command);
}

std::string errorOf(const Arguments& arguments) {
    const ParsedArguments parsed = parseArguments(arguments);
    EXPECT_FALSE(parsed.command) << testing::PrintToString(arguments);
    return parsed.error;
}

TEST(Arguments, NoneOpenTheWindow) {
    const auto command = parsedAs<WindowCommand>({});
    EXPECT_FALSE(command.folder);
    EXPECT_FALSE(command.demoCamera);
}

TEST(Arguments, WhatIsNotACommandIsAFolderForTheWindow) {
    EXPECT_EQ(parsedAs<WindowCommand>({"a folder"}).folder, "a folder");
    EXPECT_EQ(parsedAs<WindowCommand>({"./demo"}).folder, "./demo");
    EXPECT_EQ(parsedAs<WindowCommand>({"--demo-camera", "demo"}).folder, "demo");
    EXPECT_EQ(parsedAs<WindowCommand>({"--", "--folder"}).folder, "--folder");
    parsedAs<DemoCommand>({"demo"});
}

TEST(Arguments, TheDemoCameraIsOfferedInTheWindowAndByDevices) {
    EXPECT_TRUE(parsedAs<WindowCommand>({"--demo-camera"}).demoCamera);
    EXPECT_TRUE(parsedAs<WindowCommand>({"--demo-camera", "f"}).demoCamera);
    EXPECT_TRUE(parsedAs<WindowCommand>({"f", "--demo-camera"}).demoCamera);
    EXPECT_FALSE(parsedAs<DevicesCommand>({"devices"}).demoCamera);
    EXPECT_TRUE(parsedAs<DevicesCommand>({"devices", "--demo-camera"}).demoCamera);
}

TEST(Arguments, TheDemoCameraShowsBarsOnRequest) {
    for (const Arguments& arguments :
         {Arguments{"--demo-camera", "f"}, {"--demo-camera=bars", "f"}}) {
        const auto command = parsedAs<WindowCommand>(arguments);
        EXPECT_TRUE(command.demoCamera);
        EXPECT_EQ(command.demoBars, arguments.front() == "--demo-camera=bars");
        EXPECT_EQ(command.folder, "f");
    }
    EXPECT_TRUE(parsedAs<DevicesCommand>({"devices", "--demo-camera=bars"}).demoBars);
    EXPECT_TRUE(
        parsedAs<CaptureCommand>({"capture", "f", "--device", "d", "--demo-camera=bars"}).demoBars);
}

TEST(Arguments, HelpWinsOverEverythingBeforeTwoDashes) {
    for (const Arguments& arguments :
         {Arguments{"--help"}, {"-h"}, {"capture", "--help"}, {"--version", "-h", "--bogus"}}) {
        parsedAs<HelpCommand>(arguments);
    }
    EXPECT_EQ(parsedAs<FramesCommand>({"frames", "--", "--help"}).folder, "--help");
    parsedAs<VersionCommand>({"--version"});
    parsedAs<VersionCommand>({"-V"});
}

TEST(Arguments, HelpIsForACommandOrForAll) {
    EXPECT_EQ(parsedAs<HelpCommand>({"--help"}).topic, "");
    EXPECT_EQ(parsedAs<HelpCommand>({"help"}).topic, "");
    EXPECT_EQ(parsedAs<HelpCommand>({"a folder", "--help"}).topic, "");
    EXPECT_EQ(parsedAs<HelpCommand>({"help", "compile"}).topic, "compile");
    EXPECT_EQ(parsedAs<HelpCommand>({"compile", "--crf", "--help"}).topic, "compile");
}

TEST(Arguments, CaptureEndsAtATimeOrMoment) {
    const auto command = parsedAs<CaptureCommand>(
        {"capture", "f", "--device", "d", "--duration", "1h30m", "--until", "2037-12-31T18:30"});
    EXPECT_EQ(command.end.duration, std::chrono::seconds(5400));
    EXPECT_GT(command.end.until, std::time(nullptr));
    EXPECT_FALSE(command.end.count);
}

TEST(Arguments, MoviesAndListsHaveTheirForm) {
    const auto compile =
        parsedAs<CompileCommand>({"compile", "f", "--output", "m.mov", "--force", "--json"});
    EXPECT_EQ(compile.movie.output, "m.mov");
    EXPECT_TRUE(compile.movie.replaces);
    EXPECT_TRUE(compile.isJson);
    EXPECT_EQ(parsedAs<DemoCommand>({"demo", "--output=m.mov"}).movie.output, "m.mov");
    EXPECT_TRUE(parsedAs<DevicesCommand>({"devices", "--json"}).isJson);
    EXPECT_TRUE(parsedAs<FramesCommand>({"frames", "f", "--json"}).isJson);
    EXPECT_TRUE(
        parsedAs<CaptureCommand>({"capture", "f", "--device", "d", "--create"}).createsFolder);
}

TEST(Arguments, CommandsAreQuietOrVerbose) {
    EXPECT_EQ(parsedAs<CompileCommand>({"compile", "f"}).verbosity, Verbosity::usual);
    EXPECT_EQ(parsedAs<CompileCommand>({"compile", "f", "--quiet"}).verbosity, Verbosity::quiet);
    EXPECT_EQ(parsedAs<DemoCommand>({"demo", "--verbose"}).verbosity, Verbosity::verbose);
    EXPECT_EQ(parsedAs<DevicesCommand>({"devices", "--quiet"}).verbosity, Verbosity::quiet);
    EXPECT_EQ(parsedAs<FramesCommand>({"frames", "--verbose", "f"}).verbosity, Verbosity::verbose);
    EXPECT_EQ(parsedAs<CaptureCommand>({"capture", "f", "--device", "d", "--quiet"}).verbosity,
              Verbosity::quiet);
    EXPECT_EQ(errorOf({"compile", "f", "--quiet", "--verbose"}),
              "--quiet and --verbose exclude each other.");
    EXPECT_EQ(errorOf({"folder", "--verbose"}), "There is no option '--verbose' here.");
}

TEST(Arguments, FramesTakesOneFolder) {
    const auto command = parsedAs<FramesCommand>({"frames", "--null", "a b"});
    EXPECT_EQ(command.folder, "a b");
    EXPECT_TRUE(command.endsWithNul);
    EXPECT_FALSE(parsedAs<FramesCommand>({"frames", "f"}).endsWithNul);
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
    EXPECT_EQ(parsedAs<CompileCommand>({"compile", "f", "--fps", "1"}).movie.framesPerSecond, 1);
    EXPECT_EQ(parsedAs<CompileCommand>({"compile", "f", "--fps", "010"}).movie.framesPerSecond, 10);
}

TEST(Arguments, CaptureTakesEverything) {
    const auto command =
        parsedAs<CaptureCommand>({"capture", "f", "--device", "Cam 1", "--interval", "1:02:3",
                                  "--count", "5", "--compile", "--fps", "12", "--demo-camera"});
    EXPECT_EQ(command.folder, "f");
    EXPECT_EQ(command.device, "Cam 1");
    EXPECT_THAT(*command.interval, ElementsAre("1", "2", "3"));
    EXPECT_EQ(command.end.count, 5);
    EXPECT_TRUE(command.compiles);
    EXPECT_EQ(command.movie.framesPerSecond, 12);
    EXPECT_TRUE(command.demoCamera);
}

TEST(Arguments, CaptureHasNoEndByDefault) {
    const auto command = parsedAs<CaptureCommand>({"capture", "f", "--device", "d"});
    EXPECT_FALSE(command.end.count || command.end.duration || command.end.until);
    EXPECT_FALSE(command.createsFolder);
    EXPECT_FALSE(command.interval);
    EXPECT_FALSE(command.compiles);
}

TEST(Arguments, DemoTakesAFolderOrNone) {
    EXPECT_FALSE(parsedAs<DemoCommand>({"demo"}).folder);
    EXPECT_EQ(parsedAs<DemoCommand>({"demo", "f"}).folder, "f");
}

TEST(Arguments, ValuesAndFoldersAreTakenLiterally) {
    for (const char* text :
         {"[a,b]", "{}", "%%", "a=b", "+5", "/x", "--", "-5", "--x=y", "--null", "--dev"}) {
        EXPECT_EQ(parsedAs<CaptureCommand>({"capture", "f", "--device", text}).device, text);
        EXPECT_EQ(parsedAs<FramesCommand>({"frames", "--", text}).folder, text);
    }
    EXPECT_EQ(parsedAs<CaptureCommand>({"capture", "f", "--device=--d"}).device, "--d");
    EXPECT_EQ(parsedAs<CaptureCommand>({"capture", "f", "--device", "--fps=25"}).device,
              "--fps=25");
    EXPECT_EQ(parsedAs<FramesCommand>({"frames", "[a,b]"}).folder, "[a,b]");
    EXPECT_EQ(parsedAs<FramesCommand>({"frames", "-"}).folder, "-");
}

TEST(Arguments, TheLastOfRepeatedOptionsCountsAndAllAreChecked) {
    EXPECT_EQ(parsedAs<CompileCommand>({"compile", "f", "--crf=1", "--crf", "2"}).movie.rateFactor,
              2);
    EXPECT_TRUE(parsedAs<FramesCommand>({"frames", "--null", "--null", "f"}).endsWithNul);
    EXPECT_THAT(errorOf({"compile", "f", "--crf", "99", "--crf", "2"}), HasSubstr("'99'"));
}

TEST(Arguments, TheRateHasTheSlidersRange) {
    for (const char* bad : {"0", "61", "-1", "2.5", "x", "", "0x10", "+5", " 5", "99999999999"}) {
        EXPECT_EQ(errorOf({"compile", "f", "--fps", bad}),
                  std::string("--fps takes a whole number from 1 to 60, not '") + bad + "'.");
    }
}

TEST(Arguments, ErrorsNameTheArgument) {
    const std::vector<std::pair<Arguments, std::string>> cases = {
        {{"--version", "x"}, "--version stands alone"},
        {{"a", "b"}, "'b' is one argument too many"},
        {{""}, "folder is missing"},
        {{"--fps"}, "no option '--fps'"},
        {{"devices", "x"}, "'x' is one argument too many"},
        {{"devices", "--fast"}, "no option '--fast'"},
        {{"frames"}, "folder is missing"},
        {{"frames", ""}, "folder is missing"},
        {{"frames", "a", "b"}, "'b' is one argument too many"},
        {{"frames", "--nul", "f"}, "no option '--nul'"},
        {{"frames", "-5"}, "no option '-5'"},
        {{"frames", "-x"}, "no option '-x'"},
        {{"frames", "--!x"}, "no option '--!x'"},
        {{"frames", "f", "--null="}, "--null takes no value"},
        {{"frames", "f", "--null=true"}, "--null takes no value"},
        {{"frames", "f", "--null=false"}, "--null takes no value"},
        {{"compile"}, "folder is missing"},
        {{"compile", "f", "--fps=", "5"}, "1 to 60, not ''"},
        {{"compile", "f", "--fp=5"}, "no option '--fp=5'"},
        {{"compile", "f", "--fp", "5"}, "no option '--fp'"},
        {{"compile", "f", "--crf", "52"}, "--crf takes a whole number from 0 to 51, not '52'"},
        {{"compile", "f", "--crf", "-1"}, "0 to 51, not '-1'"},
        {{"compile", "f", "--crf"}, "--crf needs a value"},
        {{"compile", "f", "--x264-preset", "warp"}, "'warp'"},
        {{"compile", "f", "--count", "2"}, "no option '--count'"},
        {{"capture", "f"}, "--device is missing"},
        {{"capture", "f", "--device", ""}, "--device is missing"},
        {{"capture", "f", "--device=", "x"}, "'x' is one argument too many"},
        {{"capture", "f", "--d", "d"}, "no option '--d'"},
        {{"capture", "--device", "d"}, "folder is missing"},
        {{"capture", "f", "--device", "d", "--fps", "5"}, "go with --compile"},
        {{"capture", "f", "--device", "d", "--count", "0"}, "--count takes a whole number from 1"},
        {{"capture", "f", "--device", "d", "--count", "1.5"}, "'1.5'"},
        {{"capture", "f", "--device", "d", "--interval", "1:60"}, "'1:60'"},
        {{"capture", "f", "--device", "d", "--interval", "10x"}, "1 s to 999:59:59, not '10x'"},
        {{"capture", "f", "--device", "d", "--duration", "0"}, "--duration takes a time"},
        {{"capture", "f", "--device", "d", "--duration", "x"}, "not 'x'"},
        {{"capture", "f", "--device", "d", "--until", "25:00"}, "--until takes a time of day"},
        {{"capture", "f", "--device", "d", "--until", "1999-12-31T23:59"}, "to come"},
        {{"capture", "f", "--device", "d", "--output", "m.mov"}, "go with --compile"},
        {{"compile", "f", "--force"}, "--force goes with --output"},
        {{"compile", "f", "--output", ""}, "--output takes the name of a file"},
        {{"demo", "--force"}, "--force goes with --output"},
        {{"frames", "f", "--null", "--json"}, "--null and --json exclude each other"},
        {{"help", "x"}, "no command 'x'"},
        {{"help", "demo", "x"}, "'x' is one argument too many"},
        {{"-V", "x"}, "-V stands alone"},
        {{"demo", "a", "b"}, "'b' is one argument too many"},
        {{"--demo-camera=snow"}, "no value but 'bars', not 'snow'"},
        {{"demo", "--fps", "5"}, "no option '--fps'"}};
    for (const auto& [arguments, part] : cases) {
        EXPECT_THAT(errorOf(arguments), HasSubstr(part)) << testing::PrintToString(arguments);
    }
}

TEST(IntervalArgument, BecomesTheFields) {
    EXPECT_THAT(*parseInterval("1"), ElementsAre("0", "0", "1"));
    EXPECT_THAT(*parseInterval("90"), ElementsAre("0", "1", "30"));
    EXPECT_THAT(*parseInterval("1:30"), ElementsAre("0", "1", "30"));
    EXPECT_THAT(*parseInterval("1h30m"), ElementsAre("1", "30", "0"));
    EXPECT_THAT(*parseInterval("999:59:59"), ElementsAre("999", "59", "59"));
}

TEST(IntervalArgument, ThatTheFieldsWouldChangeIsRefused) {
    for (const char* text : {"0", "0:00:00", "0s", "1000:00:00", "3600000", "1000h", "0.5", "-5",
                             "abc", "", "0:75:0", "1:2:3:4"}) {
        EXPECT_FALSE(parseInterval(text)) << text;
    }
}

TEST(HelpText, NamesEveryCommandAndOption) {
    for (const char* word :
         {"devices",   "frames",        "compile", "capture",   "demo",       "--null",
          "--fps",     "--x264-preset", "--crf",   "--device",  "--interval", "--count",
          "--compile", "--demo-camera", "--help",  "--version", "--duration", "--until",
          "--create",  "--output",      "--force", "--json",    "--quiet",    "--verbose"}) {
        EXPECT_THAT(helpText(), HasSubstr(word));
    }
}

TEST(HelpText, OfACommandIsItsPartOfTheWhole) {
    EXPECT_THAT(helpText("compile"), HasSubstr("vistrane compile FOLDER"));
    EXPECT_THAT(helpText("compile"), Not(HasSubstr("vistrane capture")));
    EXPECT_THAT(helpText("help"), HasSubstr("vistrane help [COMMAND]"));
    for (const char* command : {"devices", "frames", "compile", "capture", "demo", "help"}) {
        const std::string text = helpText(command);
        EXPECT_THAT(text, MatchesRegex("Usage:\n  vistrane [^\n]+\n(      [^\n]+\n|  +[^\n]+\n)+\n"
                                       "(.|\n)*\nframes, and 129, 130 or 143 [^\n]*\n"))
            << command;
        EXPECT_THAT(helpText(), HasSubstr(text.substr(7, text.find("\n\n") - 6)));
    }
    EXPECT_EQ(helpText("no command"), "");
}

TEST(SimilarCommand, DiffersByFewTypingMistakes) {
    EXPECT_EQ(similarCommand("compil"), "compile");
    EXPECT_EQ(similarCommand("cpature"), "capture");
    EXPECT_EQ(similarCommand("frame"), "frames");
    EXPECT_EQ(similarCommand("device"), "devices");
    EXPECT_EQ(similarCommand("dmo"), "demo");
    for (const char* folder : {"", "x", "pictures", "home", "de", "comp"}) {
        EXPECT_EQ(similarCommand(folder), "") << folder;
    }
}

} // namespace
} // namespace vistrane
