#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/backends/movies/MovieTestKit.h"
#include "tests/backends/movies/QuickTimeBoxes.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

void put(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class MovieFileTest : public testing::Test {
protected:
    AVAssetWriterResult create(const std::string& where) {
        return movies.assetWriterWithURL(NSURL::fileURLWithPath(where), AVFileTypeQuickTimeMovie);
    }

    TestFolder folder;
    RecordingObserver observer;
    Movies movies{observer};
    const std::string path = folder / "m.mov";
};

TEST_F(MovieFileTest, AnExistingFileMakesCreationFailAndStaysAsItIs) {
    put(path, "precious");
    const auto result = create(path);
    EXPECT_FALSE(result.writer);
    ASSERT_TRUE(result.error);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr(path));
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("already there"));
    EXPECT_EQ(contents(path), "precious");
    EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
}

TEST_F(MovieFileTest, ADanglingLinkOrAFolderOfThatNameMakesCreationFail) {
    std::filesystem::create_symlink("nowhere", path);
    EXPECT_TRUE(create(path).error);
    std::filesystem::create_directory(folder / "d.mov");
    EXPECT_TRUE(create(folder / "d.mov").error);
    EXPECT_THAT(folder.names(), ElementsAre("d.mov", "m.mov"));
}

TEST_F(MovieFileTest, AMissingFolderMakesCreationFailWithItsPath) {
    const auto result = create(folder / "missing/m.mov");
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->domain, "NSPOSIXErrorDomain");
    EXPECT_EQ(result.error->code, ENOENT);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr(folder / "missing"));
}

TEST_F(MovieFileTest, AFileInPlaceOfTheFolderMakesCreationFail) {
    put(folder / "file", "");
    const auto result = create(folder / "file/m.mov");
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->code, ENOTDIR);
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
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("Choose a project folder"));
}

TEST_F(MovieFileTest, AnUnusablePathMakesCreationFail) {
    EXPECT_TRUE(create("").error);
    EXPECT_TRUE(create("/").error);
    EXPECT_TRUE(create(folder / std::string("a\0b.mov", 7)).error);
    EXPECT_TRUE(create(folder / "..").error);
    EXPECT_TRUE(create(folder / std::string(256, 'x')).error);
    EXPECT_TRUE(movies
                    .assetWriterWithURL(NSURL::URLWithString("https://example.org/m.mov"),
                                        AVFileTypeQuickTimeMovie)
                    .error);
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFileTest, NoEncoderMakesCreationFail) {
    MovieOptions options;
    options.encoder = "no-such-encoder";
    Movies without(observer, options);
    const auto result =
        without.assetWriterWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie);
    EXPECT_FALSE(result.writer);
    ASSERT_TRUE(result.error);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("no H.264 encoder"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFileTest, TheNameAppearsWithTheWholeMovieOnly) {
    OpenMovie movie(movies, path, 64, 48);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_THAT(folder.names(), ElementsAre(".m.mov.vistrane-part"));
    movie.append(scene(64, 48, 0), kCMTimeZero);
    EXPECT_FALSE(std::filesystem::exists(path));
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
    EXPECT_TRUE(readBoxes(path));
}

class MovieName : public MovieFileTest, public testing::WithParamInterface<std::string> {};

TEST_P(MovieName, OfAnyBytesWorks) {
    const std::string odd = folder / GetParam();
    OpenMovie movie(movies, odd, 64, 48);
    ASSERT_EQ(movie.creationError, std::nullopt);
    EXPECT_TRUE(create(odd).error);
    movie.append(scene(64, 48, 0), kCMTimeZero);
    movie.finish();
    ASSERT_EQ(observer.outcome(odd), std::nullopt);
    EXPECT_THAT(folder.names(), ElementsAre(GetParam()));
    EXPECT_TRUE(readBoxes(odd));
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

TEST_F(MovieFileTest, AnotherMovieInTheFolderIsNotTakenForALeftover) {
    OpenMovie movie(movies, path, 64, 48);
    movie.append(scene(64, 48, 0), kCMTimeZero);
    const auto other = create(folder / "other.mov");
    EXPECT_FALSE(other.error);
    movie.finish();
    EXPECT_EQ(observer.outcome(path), std::nullopt);
}

TEST_F(MovieFileTest, ANameTakenDuringTheWritingIsNotOverwritten) {
    OpenMovie movie(movies, path, 64, 48);
    movie.append(scene(64, 48, 0), kCMTimeZero);
    put(path, "precious");
    movie.finish();
    const auto outcome = observer.outcome(path);
    ASSERT_TRUE(outcome);
    EXPECT_THAT(outcome->localizedDescription, HasSubstr("already there"));
    EXPECT_EQ(contents(path), "precious");
    EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
}

TEST_F(MovieFileTest, AWriterThatGoesAwayUnfinishedLeavesNothing) {
    {
        OpenMovie movie(movies, path, 64, 48);
        for (int i = 0; i < 20; ++i) {
            movie.append(scene(64, 48, i), frameTime(i, 25));
        }
        EXPECT_THAT(folder.names(), SizeIs(1));
    }
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_FALSE(observer.hasOutcome(path));
}

TEST_F(MovieFileTest, FinishingWithoutAFrameFailsAndLeavesNothing) {
    OpenMovie movie(movies, path, 64, 48);
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
    OpenMovie movie(movies, path, 160, 120);
    int appended = 0;
    for (int i = 0; i < 200; ++i) {
        appended += movie.append(noise(160, 120, static_cast<std::uint32_t>(i)), frameTime(i, 25));
    }
    const auto error = movie.writer->error();
    movie.finish();
    const auto outcome = observer.outcome(path);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);

    EXPECT_LT(appended, 200);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EFBIG);
    EXPECT_EQ(outcome, error);
    EXPECT_EQ(observer.refusals().back(), *error);
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFileTest, AFullDiskFailsTheMovieWithTheReason) {
    const std::string disk = folder / "disk";
    std::filesystem::create_directory(disk);
    if (outputOf("mount -t tmpfs -o size=128k tmpfs " + quoted(disk) + " 2>&1 && echo done") !=
        "done\n") {
        GTEST_SKIP() << "mounting is not allowed here";
    }
    const std::string full = disk + "/m.mov";
    OpenMovie movie(movies, full, 160, 120);
    for (int i = 0; i < 200; ++i) {
        movie.append(noise(160, 120, static_cast<std::uint32_t>(i)), frameTime(i, 25));
    }
    const auto error = movie.writer->error();
    movie.finish();
    const auto outcome = observer.outcome(full);
    const bool isEmpty = std::filesystem::is_empty(disk);
    outputOf("umount -l " + quoted(disk));

    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOSPC);
    EXPECT_THAT(error->localizedDescription, HasSubstr("No space left on device"));
    EXPECT_THAT(error->localizedDescription, HasSubstr(full));
    EXPECT_THAT(error->localizedDescription, HasSubstr("Free some space"));
    EXPECT_EQ(outcome, error);
    EXPECT_TRUE(isEmpty);
}

TEST_F(MovieFileTest, GivingAllUpRemovesEveryHiddenFileAtOnceAndForGood) {
    OpenMovie first(movies, path, 320, 240);
    OpenMovie second(movies, folder / "n.mov", 320, 240);
    for (int i = 0; i < 10; ++i) {
        first.append(noise(320, 240, static_cast<std::uint32_t>(i)), frameTime(i, 25));
        second.append(noise(320, 240, static_cast<std::uint32_t>(i)), frameTime(i, 25));
    }
    second.finish();
    observer.outcome(folder / "n.mov");
    std::thread([&] { movies.abandonAll(); }).join();
    EXPECT_THAT(folder.names(), ElementsAre("n.mov"));
    EXPECT_FALSE(first.append(noise(320, 240, 0), CMTimeMake(99, 25)));
    EXPECT_TRUE(first.input->isReadyForMoreMediaData());
    first.finish();
    EXPECT_TRUE(observer.outcome(path));
    EXPECT_THAT(folder.names(), ElementsAre("n.mov"));
    EXPECT_TRUE(create(folder / "o.mov").error);
}

TEST_F(MovieFileTest, GivingUpAtAnyMomentLeavesAWholeMovieOrNothing) {
    for (int round = 0; round < 12; ++round) {
        Movies ending(observer);
        const std::string name = folder / ("r" + std::to_string(round) + ".mov");
        OpenMovie movie(ending, name, 64, 48);
        std::atomic<int> appended = 0;
        std::thread killer([&] {
            while (appended.load() < round) {
                std::this_thread::yield();
            }
            ending.abandonAll();
        });
        for (int i = 0; i < 10; ++i) {
            movie.append(scene(64, 48, i), frameTime(i, 25));
            ++appended;
        }
        movie.finish();
        ++appended;
        ++appended;
        killer.join();
        const auto outcome = observer.outcome(name);
        EXPECT_EQ(std::filesystem::exists(name), !outcome);
        if (!outcome) {
            EXPECT_TRUE(readBoxes(name));
        }
    }
    for (const std::string& name : folder.names()) {
        EXPECT_NE(name.front(), '.') << name;
    }
}

/// Death tests run their statement in a new process, which makes a folder of its own: the parent's
/// comes through the environment.
class MovieProcess : public MovieFileTest {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        ::setenv("VISTRANE_TEST_MOVIE", path.c_str(), 0);
        shared = ::getenv("VISTRANE_TEST_MOVIE");
    }
    void TearDown() override { ::unsetenv("VISTRANE_TEST_MOVIE"); }

    /// In the new process, which never comes to tidy up.
    void dropOwnFolder() { std::filesystem::remove(folder.path()); }

    std::string shared;
};

TEST_F(MovieProcess, ThatIsKilledLeavesAFileThatTheNextWriterRemoves) {
    EXPECT_EXIT(
        {
            dropOwnFolder();
            OpenMovie movie(movies, shared, 160, 120);
            for (int i = 0; i < 30; ++i) {
                movie.append(noise(160, 120, static_cast<std::uint32_t>(i)), frameTime(i, 25));
            }
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
            auto* movie = new OpenMovie(movies, shared, 320, 240);
            for (int i = 0; i < 30; ++i) {
                movie->append(noise(320, 240, static_cast<std::uint32_t>(i)), frameTime(i, 25));
            }
            movie->finish();
            movies.abandonAll();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_THAT(folder.names(), IsEmpty());
}

} // namespace
} // namespace vistrane
