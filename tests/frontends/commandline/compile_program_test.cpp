#include <csignal>
#include <tuple>

#include <sys/stat.h>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class CompileProgram : public CommandLineTest {
protected:
    void writeFrames(int count) const {
        for (int number = 1; number <= count; ++number) {
            writeGreyFrame(folder + "/f" + std::to_string(number) + ".png", 10 * number);
        }
    }

    /// Returns the printed path. Checks that it is the only output and the only movie.
    std::string movieOf(const Ended& ended, int status = 0) const {
        EXPECT_EQ(ended.status, status) << ended.errors;
        EXPECT_THAT(ended.lines(), SizeIs(1));
        EXPECT_THAT(ended.output, EndsWith(".mov\n"));
        const auto movies = namesEndingIn(".mov", folder);
        EXPECT_THAT(movies, SizeIs(1));
        const std::string path = folder + "/" + (movies.empty() ? "" : movies.front());
        EXPECT_EQ(ended.output, path + "\n");
        return path;
    }

    void expectGreys(const std::string& movie, const std::vector<int>& expected) const {
        const std::vector<int> greys = greysOf(movie);
        ASSERT_EQ(greys.size(), expected.size());
        for (std::size_t i = 0; i < greys.size(); ++i) {
            EXPECT_NEAR(greys[i], expected[i], 4) << "frame " << i;
        }
    }
};

TEST_F(CompileProgram, PrintsThePathAndSaysHowManyFramesAreInTheMovie) {
    writeFrames(3);
    const Ended ended = run({"compile", folder});
    const std::string movie = movieOf(ended);
    EXPECT_EQ(ended.errors, "3 of 3 frames went into the movie.\n");
}

TEST_F(CompileProgram, QuietSaysNothingButWarnings) {
    writeFrames(3);
    Ended ended = run({"compile", folder, "--quiet"});
    std::filesystem::remove(movieOf(ended));
    EXPECT_EQ(ended.errors, "");
    options.errorsGoToTerminal = true;
    ended = run({"compile", folder, "--quiet"});
    std::filesystem::remove(movieOf(ended));
    EXPECT_EQ(ended.errors, "");
    writeFile(folder + "/z.png", "");
    ended = run({"compile", folder, "--quiet"});
    movieOf(ended, 3);
    EXPECT_THAT(ended.errors, StartsWith("Not in the movie: "));
    EXPECT_THAT(ended.errors, Not(HasSubstr("frames went into")));
}

TEST_F(CompileProgram, VerbosePrintsThePathAndLogsTheRest) {
    writeFrames(3);
    const Ended ended = run({"compile", folder, "--verbose"});
    const std::string movie = movieOf(ended);
    EXPECT_THAT(std::filesystem::path(movie).filename().string(),
                testing::MatchesRegex("[0-9]+-[0-9]+\\.mov"));
    EXPECT_THAT(ended.errors, HasSubstr("\nmoviePath=" + movie + "\n"));
    EXPECT_THAT(ended.errors, HasSubstr("finished writing\n"));
    EXPECT_THAT(ended.errors, EndsWith("3 of 3 frames went into the movie.\n"));
    EXPECT_THAT(ended.errors, Not(HasSubstr("\r")));
    EXPECT_THAT(ended.errors, Not(HasSubstr("\x1b")));
    const MovieFacts facts = movieFacts(movie);
    EXPECT_EQ(facts.brand, "qt  ");
    EXPECT_EQ(facts.codec, "h264");
    EXPECT_EQ(facts.streams, 1);
    EXPECT_EQ(facts.timeBase, "1/30");
    EXPECT_EQ(facts.times, frameTimes(3));
}

TEST_F(CompileProgram, TheRateIsTheRequestedOne) {
    writeFrames(4);
    for (const char* rate : {"1", "25", "60"}) {
        const std::string movie = movieOf(run({"compile", folder, "--fps", rate}));
        const MovieFacts facts = movieFacts(movie);
        EXPECT_EQ(facts.timeBase, std::string("1/") + rate);
        EXPECT_EQ(facts.times, frameTimes(4));
        EXPECT_EQ(facts.durations.back(), 1);
        std::filesystem::remove(movie);
    }
}

TEST_F(CompileProgram, QualityAndPresetReachTheEncoder) {
    FrameForm form;
    form.width = 320;
    form.height = 240;
    form.isNoise = true;
    for (int number = 0; number < 4; ++number) {
        form.colour[0] = number;
        writeFrame(folder + "/f" + std::to_string(number) + ".png", form);
    }
    std::vector<std::uintmax_t> sizes;
    for (const char* factor : {"51", "0"}) {
        const std::string movie = movieOf(run({"compile", folder, "--crf", factor}));
        EXPECT_THAT(movieFacts(movie).times, SizeIs(4));
        sizes.push_back(std::filesystem::file_size(movie));
        std::filesystem::remove(movie);
    }
    EXPECT_GT(sizes[1], 4 * sizes[0]);
    for (const char* preset : {"ultrafast", "placebo"}) {
        const std::string movie = movieOf(run({"compile", folder, "--x264-preset", preset}));
        EXPECT_THAT(movieFacts(movie).times, SizeIs(4));
        std::filesystem::remove(movie);
    }
}

TEST_F(CompileProgram, FramesFollowEachOtherInTheOrderOfTheirNames) {
    const std::vector<std::string> names = {".hidden.png",
                                            "a\nb.png",
                                            "b c.png",
                                            "frame2.png",
                                            "Frame9.png",
                                            "frame10.png",
                                            std::string(251, 'x') + ".png",
                                            "\xff\xfe.png"};
    std::vector<int> greys;
    for (const std::string& name : names) {
        greys.push_back(20 + 25 * static_cast<int>(greys.size()));
        writeGreyFrame(folder + "/" + name, greys.back());
    }
    writeGreyFrame(folder + "/LEFT-OUT.PNG", 255);
    const std::string movie = movieOf(run({"compile", folder, "--crf", "1"}));
    EXPECT_EQ(movieFacts(movie).times, frameTimes(static_cast<long>(names.size())));
    expectGreys(movie, greys);
}

TEST_F(CompileProgram, ProgressIsShownOnATerminalOnly) {
    writeFrames(20);
    const std::string movie = movieOf(run({"compile", folder}));
    std::filesystem::remove(movie);
    options.errorsGoToTerminal = true;
    const Ended ended = run({"compile", folder});
    movieOf(ended);
    EXPECT_THAT(ended.errors, HasSubstr("\r\x1b[K["));
    EXPECT_THAT(ended.errors, HasSubstr(" 95 % 19 of 20 frames"));
    EXPECT_THAT(ended.errors, Not(HasSubstr(" 100 %")));
    EXPECT_THAT(ended.errors, EndsWith("20 of 20 frames went into the movie.\r\n"));
}

TEST_F(CompileProgram, FewerThanTwoFramesAreRefusedWithTheAlert) {
    for (int frames = 0; frames <= 1; ++frames) {
        writeFrames(frames);
        const auto before = namesIn(folder);
        const Ended ended = run({"compile", folder});
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors,
                  "Bring me more frames please\n"
                  "I need at least 2 frames to generate a movie.\n\n"
                  "Please double check you have more frames in the project folder and make sure "
                  "they are NOT corrupted.\n");
        EXPECT_EQ(namesIn(folder), before);
    }
}

TEST_F(CompileProgram, TheEncodersLibrariesAreLoadedWithTheFirstMovieOnly) {
    writeFrames(2);
    options.environment["LD_DEBUG"] = "files";
    EXPECT_THAT(run({"frames", folder}).errors,
                AllOf(HasSubstr("file=libc.so"), Not(HasSubstr("libavcodec"))));
    EXPECT_THAT(run({"compile", folder}).errors, HasSubstr("file=libavcodec.so"));
}

TEST_F(CompileProgram, WithoutAnEncoderTheReasonIsGivenAndNothingIsWritten) {
    writeFrames(2);
    const auto before = namesIn(folder);
    options.environment["LD_LIBRARY_PATH"] = VISTRANE_PLANTED_LIBAVCODEC;
    const Ended ended = run({"compile", folder});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("there is no H.264 encoder on this system. Install "
                                        "libavcodec with libx264"));
    EXPECT_EQ(namesIn(folder), before);
}

TEST_F(CompileProgram, ClosedStreamsDoNotReachTheMovie) {
    writeFrames(3);
    writeFile(folder + "/f2.png", "not a frame, so that there is something to log");
    const Ended ended = runIn({"sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-"}, {"compile", folder});
    EXPECT_EQ(ended.status, 1);
    const auto movies = namesEndingIn(".mov", folder);
    ASSERT_THAT(movies, SizeIs(1));
    EXPECT_THAT(movieFacts(folder + "/" + movies[0]).times, ElementsAre(0, 3));
    EXPECT_THAT(contentsOf(folder + "/" + movies[0]), Not(HasSubstr("moviePath")));
}

// ---- Frames that cannot be read
// ------------------------------------------------------------------

struct BadFrame {
    std::string name;
    std::string reason;
};

class BadFrames : public CompileProgram {
protected:
    /// Writes one of each kind and returns them in the order of their names.
    std::vector<BadFrame> writeBadFrames() {
        writeGreyFrame(work / "good.png", 100);
        const std::string good = contentsOf(work / "good.png");
        std::vector<BadFrame> bad;
        const auto add = [&](const std::string& name, const std::string& contents,
                             const std::string& reason) {
            writeFile(folder + "/" + name, contents);
            bad.push_back({name, reason});
        };
        add("b1 empty.png", "", "is empty");
        add("b2 truncated.png", damaged::truncated(good), "is damaged");
        add("b3 huge.png", damaged::resized(good, 0x7fffffff, 0x7fffffff), "is too large");
        add("b4 text.png", "hello\n", "is not a PNG file");
        std::filesystem::create_directory(folder + "/b5 folder.png");
        bad.push_back({"b5 folder.png", "is not a regular file"});
        EXPECT_EQ(::mkfifo((folder + "/b6 fifo.png").c_str(), 0600), 0);
        bad.push_back({"b6 fifo.png", "is not a regular file"});
        std::filesystem::create_symlink("missing", folder + "/b7 dangling.png");
        bad.push_back({"b7 dangling.png", "No such file or directory"});
        return bad;
    }

    std::string lineFor(const BadFrame& frame, const std::string& errors) const {
        std::istringstream lines(errors);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("Not in the movie: ") &&
                line.find(folder + "/" + frame.name) != std::string::npos) {
                return line;
            }
        }
        return {};
    }

    void expectNamed(const std::vector<BadFrame>& frames, const std::string& errors) const {
        for (const BadFrame& frame : frames) {
            EXPECT_THAT(lineFor(frame, errors),
                        AllOf(StartsWith("Not in the movie: "), HasSubstr(frame.reason)))
                << frame.name;
        }
    }
};

TEST_F(BadFrames, AreLeftOutLoggedAndNamed) {
    writeGreyFrame(folder + "/a.png", 40);
    const auto bad = writeBadFrames();
    writeGreyFrame(folder + "/c1.png", 80);
    writeGreyFrame(folder + "/c2.png", 120);
    const auto before = namesIn(folder);

    const Ended ended = run({"compile", folder, "--crf", "1", "--verbose"});

    const std::string movie = movieOf(ended, 3);
    EXPECT_THAT(namesIn(folder), SizeIs(before.size() + 1));
    expectNamed(bad, ended.errors);
    EXPECT_EQ(count(ended.errors, "Not in the movie: "), bad.size());
    EXPECT_EQ(count(ended.errors, "failed append buffer with error: "), bad.size());
    EXPECT_GE(count(ended.errors, "CVPixelBufferRef could not create context\n"), bad.size() - 1);
    EXPECT_THAT(ended.errors, Not(HasSubstr("failed appending #1 buffer")));
    EXPECT_THAT(ended.errors, EndsWith("3 of 10 frames went into the movie.\n"));
    // Frames that are left out leave a gap in the times.
    EXPECT_THAT(movieFacts(movie).times, ElementsAre(0, 9, 10));
    expectGreys(movie, {40, 80, 120});
}

TEST_F(BadFrames, AFirstOneLeavesTheMovieTheSizeOfTheFirstGoodOne) {
    writeFile(folder + "/a.png", "");
    FrameForm form;
    form.width = 100;
    form.height = 60;
    writeFrame(folder + "/b.png", form);
    writeGreyFrame(folder + "/c.png", 100);
    const Ended ended = run({"compile", folder, "--verbose"});
    const MovieFacts facts = movieFacts(movieOf(ended, 3));
    EXPECT_EQ(facts.width, 100);
    EXPECT_EQ(facts.height, 60);
    EXPECT_THAT(facts.times, SizeIs(2));
    EXPECT_THAT(ended.errors, HasSubstr("CVPixelBufferRef could not create context\n"
                                        "failed appending #1 buffer\n"));
    EXPECT_THAT(ended.errors, EndsWith("2 of 3 frames went into the movie.\n"));
}

TEST_F(BadFrames, NothingElseMakesNoMovie) {
    const auto bad = writeBadFrames();
    const auto before = namesIn(folder);
    const Ended ended = run({"compile", folder});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    expectNamed(bad, ended.errors);
    EXPECT_THAT(ended.errors, HasSubstr("\nvistrane: No movie was made, because none of its frames "
                                        "could be added"));
    EXPECT_EQ(namesIn(folder), before);
}

TEST_F(BadFrames, OneThatDisappearsIsLikeAnyOther) {
    // The listing is made before the frames disappear.
    writeFrames(400);
    Program program(command({"compile", folder, "--verbose"}), options);
    ASSERT_TRUE(program.waitForError("moviePath="));
    for (int number = 200; number <= 400; ++number) {
        std::filesystem::remove(folder + "/f" + std::to_string(number) + ".png");
    }
    const Ended ended = program.wait();
    // The list may have been updated before the compile came to them.
    EXPECT_THAT(ended.status, testing::AnyOf(0, 3));
    EXPECT_THAT(movieFacts(movieOf(ended, ended.status)).times, SizeIs(AllOf(Ge(199U), Le(400U))));
}

TEST_F(CompileProgram, TheMovieIsWrittenWhereTheOutputOptionSays) {
    writeFrames(3);
    const std::string movie = work.makeFolder("movies") + "/my \"movie\"";
    const Ended ended = run({"compile", folder, "--output", movie});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.output, movie + "\n");
    EXPECT_EQ(movieFacts(movie).times, frameTimes(3));
    EXPECT_THAT(namesEndingIn(".mov", folder), IsEmpty());
    EXPECT_THAT(namesIn(work.path() + "/movies"), SizeIs(1));
}

TEST_F(CompileProgram, AnExistingFileIsReplacedOnRequestOnly) {
    writeFrames(3);
    const std::string movie = work.path() + "/m.mov";
    writeFile(movie, "precious");
    const Ended refused = run({"compile", folder, "--output", movie});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.errors, HasSubstr("it exists already"));
    EXPECT_EQ(contentsOf(movie), "precious");
    const Ended forced = run({"compile", folder, "--output", movie, "--force"});
    EXPECT_EQ(forced.status, 0) << forced.errors;
    EXPECT_EQ(movieFacts(movie).times, frameTimes(3));
}

TEST_F(CompileProgram, AnOutputThatCannotBeAMovieIsRefusedAtOnce) {
    writeFrames(3);
    for (const auto& [output, reason] :
         {std::pair<std::string, std::string>{folder, "that is no file"},
          {folder + "/f1.png", "a file with that ending is a frame"},
          {work.path() + "/m.png", "a file with that ending is a frame"},
          {work.path() + "/missing/m.mov", "there is no folder"}}) {
        const Ended ended = run({"compile", folder, "--output", output, "--force"});
        EXPECT_EQ(ended.status, 1);
        EXPECT_THAT(ended.errors, HasSubstr(reason));
        EXPECT_EQ(count(ended.errors, "\n"), 1U);
    }
}

TEST_F(CompileProgram, JsonTellsTheMovieAndTheFramesThatWereLeftOut) {
    writeFrames(3);
    writeFile(folder + "/f2 \"bad\".png", "");
    const Ended ended = run({"compile", folder, "--json", "--fps", "10"});
    EXPECT_EQ(ended.status, 3);
    ASSERT_THAT(ended.lines(), SizeIs(1));
    const std::string movie = folder + "/" + namesEndingIn(".mov", folder).at(0);
    const std::string& json = ended.output;
    EXPECT_THAT(json, HasSubstr("\"path\":\"" + movie + "\""));
    EXPECT_THAT(json, HasSubstr("\"frames\":3"));
    EXPECT_THAT(json, HasSubstr("\"leftOut\":[{\"path\":\"" + folder +
                                "/f2 \\\"bad\\\".png\",\"reason\":\""));
    const MovieFacts facts = movieFacts(movie);
    EXPECT_THAT(json, HasSubstr("\"width\":" + std::to_string(facts.width)));
    EXPECT_THAT(json, HasSubstr("\"height\":" + std::to_string(facts.height)));
    EXPECT_THAT(json, HasSubstr("\"duration\":0." + std::to_string(facts.duration)));
}

TEST_F(CompileProgram, TheMovieCarriesItsCreationTime) {
    writeFrames(3);
    const std::time_t before = std::time(nullptr);
    const std::string movie = movieOf(run({"compile", folder}));
    const std::time_t after = std::time(nullptr);
    for (const char* what : {"General;%Encoded_Date%", "Video;%Encoded_Date%"}) {
        const std::string date = mediaInfo(movie, what);
        std::tm parts{};
        ASSERT_NE(::strptime(date.c_str(), "%Y-%m-%d %H:%M:%S UTC", &parts), nullptr) << date;
        EXPECT_GE(::timegm(&parts), before);
        EXPECT_LE(::timegm(&parts), after);
    }
}

TEST_F(CompileProgram, AFolderWithoutFramesIsTold) {
    for (const char* name : {"a.PNG", "b.jpg", "c"}) {
        writeFile(folder + "/" + name, "");
    }
    const Ended ended = run({"compile", folder});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("0 of 3 entries end in '.png'."));
}

// ---- Frames of every form
// ------------------------------------------------------------------------

FrameForm greyForm(FrameForm::Kind kind, int depth, int grey) {
    FrameForm form;
    form.kind = kind;
    form.bitDepth = depth;
    form.colour = {grey, grey, grey};
    return form;
}

FrameForm sizeForm(int width, int height) {
    FrameForm form;
    form.width = width;
    form.height = height;
    return form;
}

TEST_F(CompileProgram, FramesOfEveryFormGoIntoOneMovieOfTheFirstOnesSize) {
    using Kind = FrameForm::Kind;
    std::vector<std::pair<FrameForm, int>> forms = {
        {greyForm(Kind::grey, 1, 255), 255},    {greyForm(Kind::grey, 2, 0xaa), 0xaa},
        {greyForm(Kind::grey, 4, 0x77), 0x77},  {greyForm(Kind::grey, 8, 100), 100},
        {greyForm(Kind::grey, 16, 100), 100},   {greyForm(Kind::greyAlpha, 8, 100), 100},
        {greyForm(Kind::palette, 1, 100), 100}, {greyForm(Kind::palette, 8, 100), 100},
        {greyForm(Kind::rgb, 16, 100), 100},    {greyForm(Kind::rgba, 8, 100), 100},
        {greyForm(Kind::rgba, 16, 100), 100}};
    FrameForm transparent = greyForm(Kind::rgba, 8, 200);
    transparent.alpha = 128;
    forms.emplace_back(transparent, 100); // over black
    FrameForm interlaced;
    interlaced.isInterlaced = true;
    forms.emplace_back(interlaced, 128);
    forms.emplace_back(sizeForm(100, 50), 85); // with black above and below
    std::vector<int> greys;
    for (const auto& [form, grey] : forms) {
        writeFrame(folder + "/f" + std::to_string(greys.size()) + ".png", form);
        greys.push_back(grey);
    }
    const std::string movie = movieOf(run({"compile", folder, "--crf", "1"}));
    const MovieFacts facts = movieFacts(movie);
    EXPECT_EQ(facts.width, 64);
    EXPECT_EQ(facts.height, 48);
    EXPECT_EQ(facts.times, frameTimes(static_cast<long>(forms.size())));
    expectGreys(movie, greys);
}

TEST_F(CompileProgram, AMovieHasTheSizeOfItsFirstFrameInPoints) {
    FrameForm dense = sizeForm(128, 96);
    dense.density = 144;
    const std::tuple<FrameForm, int, int> forms[] = {{sizeForm(1, 1), 1, 1},
                                                     {sizeForm(101, 75), 101, 75},
                                                     {sizeForm(10, 10000), 10, 10000},
                                                     {sizeForm(640, 1), 640, 1},
                                                     {dense, 64, 48}};
    for (const auto& [form, width, height] : forms) {
        writeFrame(folder + "/a.png", form);
        writeFrame(folder + "/b.png", form);
        const std::string movie = movieOf(run({"compile", folder, "--crf", "1"}));
        const MovieFacts facts = movieFacts(movie);
        EXPECT_EQ(facts.width, width);
        EXPECT_EQ(facts.height, height);
        expectGreys(movie, {128, 128});
        std::filesystem::remove(movie);
    }
}

// ---- Ending and leftovers
// ------------------------------------------------------------------------

TEST_F(CompileProgram, EveryReasonOfManyArrivesAndTheSummary) {
    constexpr int bad = 15000;
    for (int number = 1; number <= bad; ++number) {
        writeFile(folder + "/" + std::to_string(number) + ".png", "");
    }
    writeFrame(folder + "/good.png", {});
    const Ended ended = run({"compile", folder});
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(count(ended.errors, "Not in the movie: "), bad);
    EXPECT_THAT(ended.errors, EndsWith("\n1 of 15001 frames went into the movie.\n"));
}

class EndedCompile : public CompileProgram, public testing::WithParamInterface<int> {
protected:
    void writeSlowFrames() const {
        FrameForm form;
        form.width = 1920;
        form.height = 1080;
        form.isNoise = true;
        writeFrame(folder + "/f0.png", form);
        for (int number = 1; number < 200; ++number) {
            std::filesystem::create_symlink("f0.png",
                                            folder + "/f" + std::to_string(number) + ".png");
        }
    }
};

TEST_P(EndedCompile, ASignalLeavesNoFile) {
    writeSlowFrames();
    const auto before = namesIn(folder);
    Program program(command({"compile", folder, "--verbose", "--x264-preset", "placebo"}), options);
    ASSERT_TRUE(program.waitForError("moviePath="));
    program.signal(GetParam());
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 128 + GetParam());
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(namesIn(folder), before);
}

INSTANTIATE_TEST_SUITE_P(By, EndedCompile, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(EndedCompile, TheNextCompileRemovesTheFileOfAKilledOne) {
    writeSlowFrames();
    const auto before = namesIn(folder);
    Program program(command({"compile", folder, "--verbose", "--x264-preset", "placebo"}), options);
    ASSERT_TRUE(program.waitForError("moviePath="));
    program.signal(SIGKILL);
    EXPECT_EQ(program.wait().status, -SIGKILL);
    EXPECT_THAT(namesEndingIn(".mov", folder), IsEmpty());

    for (int number = 5; number < 200; ++number) {
        std::filesystem::remove(folder + "/f" + std::to_string(number) + ".png");
    }
    const Ended next = run({"compile", folder, "--x264-preset", "ultrafast"});
    movieOf(next);
    EXPECT_THAT(namesIn(folder), SizeIs(6));
}

TEST_F(EndedCompile, IfTheFolderIsMovedNoPathIsPrinted) {
    writeSlowFrames();
    Program program(command({"compile", folder, "--verbose", "--x264-preset", "ultrafast"}),
                    options);
    ASSERT_TRUE(program.waitForError("moviePath="));
    std::filesystem::rename(folder, work / "moved");
    const Ended ended = program.wait();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_FALSE(std::filesystem::exists(folder));
    for (const std::string& movie : namesEndingIn(".mov", work / "moved")) {
        EXPECT_THAT(movieFacts(work / "moved/" + movie).times, Not(IsEmpty()));
    }
}

TEST_F(EndedCompile, TwoAtATimeDoNotDisturbEachOther) {
    writeFrames(30);
    Program first(command({"compile", folder, "--fps", "10"}), options);
    Program second(command({"compile", folder, "--fps", "20"}), options);
    const Ended endedFirst = first.wait();
    const Ended endedSecond = second.wait();
    const auto movies = namesEndingIn(".mov", folder);
    EXPECT_EQ(static_cast<int>(movies.size()),
              (endedFirst.status == 0 ? 1 : 0) + (endedSecond.status == 0 ? 1 : 0));
    EXPECT_THAT(movies, Not(IsEmpty()));
    for (const std::string& movie : movies) {
        EXPECT_EQ(movieFacts(folder + "/" + movie).times, frameTimes(30));
    }
    EXPECT_THAT(namesIn(folder), SizeIs(30 + movies.size()));
}

} // namespace
} // namespace vistrane
