#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/backends/movies/MovieTest.h"
#include "tests/support/movie_boxes.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

void put(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

using MovieFileTest = MovieTest;

TEST_F(MovieFileTest, WhereNoNewFileCanBeCreationFailsAndChangesNothing) {
    put(path, "precious");
    std::filesystem::create_symlink("nowhere", folder / "link.mov");
    folder.makeFolder("folder.mov");
    const auto before = folder.names();
    constexpr int any = 0;
    const struct {
        std::string path;
        int code;
        std::string text;
    } cases[] = {
        {path, any, "already there (" + path},
        {folder / "link.mov", any, "already there"},
        {folder / "folder.mov", any, "already there"},
        {folder / "missing/m.mov", ENOENT, folder / "missing"},
        {folder / "m.mov/m.mov", ENOTDIR, folder / "m.mov"},
        {"", any, ""},
        {"/", any, ""},
        {folder / "..", any, ""},
        {folder / std::string("a\0b.mov", 7), any, ""},
        {folder / std::string(256, 'x'), any, ""},
    };
    for (const auto& each : cases) {
        const auto result = create(each.path);
        EXPECT_FALSE(result.writer);
        ASSERT_TRUE(result.error) << each.path;
        EXPECT_THAT(result.error->localizedDescription, HasSubstr(each.text));
        if (each.code != any) {
            EXPECT_EQ(result.error->domain, "NSPOSIXErrorDomain");
            EXPECT_EQ(result.error->code, each.code) << each.path;
        }
    }
    EXPECT_TRUE(movies
                    .assetWriterWithURL(NSURL::URLWithString("https://example.org/m.mov"),
                                        AVFileTypeQuickTimeMovie)
                    .error);
    EXPECT_EQ(contents(path), "precious");
    EXPECT_EQ(folder.names(), before);
}

TEST_F(MovieFileTest, AFolderThatMayNotBeWrittenMakesCreationFail) {
    const bool isRoot = ::geteuid() == 0;
    ASSERT_EQ(::chmod(folder.path().c_str(), isRoot ? 0755 : 0555), 0);
    if (isRoot) {
        ASSERT_EQ(::seteuid(65534), 0);
    }
    const auto result = create(path);
    if (isRoot) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    ::chmod(folder.path().c_str(), 0755);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->code, EACCES);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("Choose a folder"));
}

TEST_F(MovieFileTest, TheNameAppearsWithTheCompleteMovieOnly) {
    OpenMovie movie = open();
    EXPECT_THAT(folder.names(), ElementsAre(".m.mov.vistrane-part"));
    movie.appendFrames(1);
    EXPECT_THAT(folder.names(), ElementsAre(".m.mov.vistrane-part"));
    finish(movie);
    EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
    EXPECT_FALSE(boxesOf(path).empty());
}

class MovieName : public MovieTest, public testing::WithParamInterface<std::string> {};

TEST_P(MovieName, OfAnyBytesWorks) {
    const std::string odd = folder / GetParam();
    OpenMovie movie(movies, odd, 64, 48);
    ASSERT_EQ(movie.creationError, std::nullopt);
    EXPECT_TRUE(create(odd).error);
    movie.appendFrames(1);
    movie.finish();
    ASSERT_EQ(observer.outcome(odd), std::nullopt);
    EXPECT_THAT(folder.names(), ElementsAre(GetParam()));
    EXPECT_FALSE(boxesOf(odd).empty());
}

INSTANTIATE_TEST_SUITE_P(Names, MovieName,
                         testing::Values("two\nlines.mov", "\xFF\xFE not text.mov", "%d%s.mov",
                                         "http:x.mov", ".mov", "-i.mov", std::string(255, 'n'),
                                         std::string(63, 'n') + "\xF0\x9F\x8E\xA5" +
                                             std::string(60, 'n'),
                                         "no extension"));

TEST_F(MovieFileTest, NamesThatDifferAtTheirLongEndDoNotMeet) {
    const auto first = create(folder / (std::string(200, 'n') + "1.mov"));
    const auto second = create(folder / (std::string(200, 'n') + "2.mov"));
    EXPECT_FALSE(first.error);
    EXPECT_FALSE(second.error);
    EXPECT_THAT(folder.names(), SizeIs(2));
}

TEST_F(MovieFileTest, AnErrorShowsAnOddPathAsOneLineOfText) {
    const std::string odd = folder / "a\n\xFF.mov";
    put(odd, "");
    const std::string text = create(odd).error->localizedDescription;
    EXPECT_THAT(text, HasSubstr("a\xEF\xBF\xBD\xEF\xBF\xBD.mov"));
    EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST_F(MovieFileTest, ASecondWriterForTheSameNameFails) {
    auto first = create(path);
    ASSERT_TRUE(first.writer);
    const auto second = create(path);
    ASSERT_TRUE(second.error);
    EXPECT_THAT(second.error->localizedDescription, HasSubstr("being written already"));
    first.writer.reset();
    EXPECT_FALSE(create(path).error);
}

TEST_F(MovieFileTest, AWriterThatGoesAwayUnfinishedLeavesNothing) {
    {
        OpenMovie movie = open();
        movie.appendFrames(20);
        EXPECT_THAT(folder.names(), SizeIs(1));
    }
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_FALSE(observer.hasOutcome(path));
}

TEST_F(MovieFileTest, FinishingWithoutAFrameFailsAndLeavesNothing) {
    OpenMovie movie = open();
    EXPECT_FALSE(movie.append(nullptr, kCMTimeZero));
    movie.finish();
    const auto outcome = observer.outcome(path);
    ASSERT_TRUE(outcome);
    EXPECT_THAT(outcome->localizedDescription, HasSubstr("none of its frames"));
    EXPECT_THAT(outcome->localizedDescription, HasSubstr("could not be read"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFileTest, LeftoversAreRemovedAndForeignFilesStay) {
    put(folder / ".old.mov.vistrane-part", "half a movie");
    put(folder / ".m.mov.vistrane-part", "half a movie");
    put(folder / ".download.part", "not ours");
    put(folder / "x.vistrane-part", "not hidden");
    ASSERT_EQ(::mkfifo((folder / ".fifo.vistrane-part").c_str(), 0600), 0);
    const auto result = create(path);
    EXPECT_FALSE(result.error);
    EXPECT_THAT(folder.names(), ElementsAre(".download.part", ".fifo.vistrane-part",
                                            ".m.mov.vistrane-part", "x.vistrane-part"));
}

TEST_F(MovieFileTest, AFullFileFailsTheMovieWithTheReason) {
    struct rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit small { 20000, before.rlim_max };
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    OpenMovie movie = open(160, 120);
    const int appended = movie.appendFrames(200, noise);
    const auto error = movie.writer->error();
    movie.finish();
    const auto outcome = observer.outcome(path);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);

    EXPECT_LT(appended, 200);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EFBIG);
    EXPECT_THAT(error->localizedDescription, HasSubstr(path));
    EXPECT_EQ(outcome, error);
    EXPECT_EQ(observer.refusals().back(), *error);
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFileTest, ADiskThatIsFullAtTheIndexFailsTheMovie) {
    // An equal movie tells where the index begins.
    OpenMovie whole(movies, folder / "whole.mov", 160, 120);
    whole.appendFrames(20, noise);
    whole.finish();
    ASSERT_FALSE(observer.outcome(folder / "whole.mov"));
    std::ifstream file(folder / "whole.mov", std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    const std::size_t index = bytes.rfind("moov");
    ASSERT_NE(index, std::string::npos);

    struct rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit small { index + 100, before.rlim_max };
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    OpenMovie movie = open(160, 120);
    const int appended = movie.appendFrames(20, noise);
    movie.finish();
    const auto outcome = observer.outcome(path);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);

    EXPECT_EQ(appended, 20);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->code, EFBIG);
    EXPECT_THAT(folder.names(), ElementsAre("whole.mov"));
}

TEST_F(MovieFileTest, AbandoningAllRemovesEveryHiddenFileAtOnceAndForGood) {
    OpenMovie first = open(320, 240);
    OpenMovie second(movies, folder / "n.mov", 320, 240);
    first.appendFrames(10, noise);
    second.appendFrames(10, noise);
    second.finish();
    observer.outcome(folder / "n.mov");
    std::thread([&] { movies.end(std::chrono::milliseconds(0)); }).join();
    EXPECT_THAT(folder.names(), ElementsAre("n.mov"));
    EXPECT_FALSE(first.append(noise(320, 240, 0), CMTimeMake(99, 25)));
    EXPECT_TRUE(first.input->isReadyForMoreMediaData());
    first.finish();
    EXPECT_TRUE(observer.outcome(path));
    EXPECT_THAT(folder.names(), ElementsAre("n.mov"));
    EXPECT_TRUE(create(folder / "o.mov").error);
}

TEST_F(MovieFileTest, AbandoningAtAnyMomentLeavesACompleteMovieOrNothing) {
    for (int round = 0; round < 12; ++round) {
        Movies ending(observer);
        const std::string name = folder / ("r" + std::to_string(round) + ".mov");
        OpenMovie movie(ending, name, 64, 48);
        std::atomic<int> appended = 0;
        std::thread killer([&] {
            while (appended.load() < round) {
                std::this_thread::yield();
            }
            ending.end(std::chrono::milliseconds(0));
        });
        for (int i = 0; i < 10; ++i) {
            movie.append(scene(64, 48, i), frameTime(i));
            ++appended;
        }
        movie.finish();
        appended += 2;
        killer.join();
        const auto outcome = observer.outcome(name);
        EXPECT_EQ(std::filesystem::exists(name), !outcome);
        EXPECT_EQ(boxesOf(name).empty(), outcome.has_value());
    }
    for (const std::string& name : folder.names()) {
        EXPECT_NE(name.front(), '.') << name;
    }
}

/// A death test runs its statement in a new process, which has a folder of its own. The parent's
/// movie comes through the environment.
class MovieProcess : public MovieTest {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        ::setenv("VISTRANE_TEST_MOVIE", path.c_str(), 0);
        shared = ::getenv("VISTRANE_TEST_MOVIE");
    }
    void TearDown() override { ::unsetenv("VISTRANE_TEST_MOVIE"); }

    /// In the new process, whose destructors do not run.
    void dropOwnFolder() { std::filesystem::remove(folder.path()); }

    std::string shared;
};

TEST_F(MovieProcess, ThatIsKilledLeavesAFileThatTheNextWriterRemoves) {
    EXPECT_EXIT(
        {
            dropOwnFolder();
            OpenMovie movie(movies, shared, 160, 120);
            movie.appendFrames(30, noise);
            std::raise(SIGKILL);
        },
        testing::KilledBySignal(SIGKILL), "");
    EXPECT_THAT(folder.names(), ElementsAre(".m.mov.vistrane-part"));
    {
        const auto result = create(folder / "other.mov");
        EXPECT_FALSE(result.error);
        EXPECT_THAT(folder.names(), ElementsAre(".other.mov.vistrane-part"));
    }
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieProcess, ThatExitsDuringTheWritingNeitherHangsNorCrashes) {
    EXPECT_EXIT(
        {
            dropOwnFolder();
            static OpenMovie* const movie = new OpenMovie(movies, shared, 320, 240);
            movie->appendFrames(30, noise);
            movie->finish();
            movies.end(std::chrono::milliseconds(0));
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_THAT(folder.names(), IsEmpty());
}

} // namespace
} // namespace vistrane
