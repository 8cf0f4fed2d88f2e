#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include "tests/backends/movies/MovieTest.h"
#include "tests/support/movie_boxes.h"

namespace {

// The error numbers of the calls below; 0 for none. Atomic, because the job of an earlier test may
// still be writing.
std::atomic<int> renameError = 0;
std::atomic<int> linkError = 0;
/// How many of the next such calls a signal interrupts.
std::atomic<int> interruptions = 0;
std::atomic<int> syncError = 0;
/// The number of the call of fsync that hangs, from 1, and how many calls there were.
std::atomic<int> hangingSync = 0;
std::atomic<int> syncs = 0;

int failWith(int number) {
    errno = number;
    return -1;
}

} // namespace

// File systems that this machine does not have: these functions take the place of the C library's
// in this program.
extern "C" {
int renameat2(int oldFolder, const char* old, int newFolder, const char* name,
              unsigned int flags) noexcept {
    return interruptions > 0 ? (--interruptions, failWith(EINTR))
           : renameError != 0
               ? failWith(renameError)
               : static_cast<int>(::syscall(SYS_renameat2, oldFolder, old, newFolder, name, flags));
}
int linkat(int oldFolder, const char* old, int newFolder, const char* name, int flags) noexcept {
    return interruptions > 0 ? (--interruptions, failWith(EINTR))
           : linkError != 0
               ? failWith(linkError)
               : static_cast<int>(::syscall(SYS_linkat, oldFolder, old, newFolder, name, flags));
}
int fsync(int descriptor) {
    if (const int call = ++syncs; call == hangingSync) {
        hangingSync.wait(call);
    }
    return syncError != 0 ? failWith(syncError)
                          : static_cast<int>(::syscall(SYS_fsync, descriptor));
}
}

namespace vistrane {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class MoviePublishing : public MovieTest {
protected:
    ~MoviePublishing() override { renameError = linkError = syncError = 0; }

    /// The error of a movie that is finished now.
    std::string failure() {
        RecordingObserver recorder;
        Movies making(recorder);
        OpenMovie movie(making, path, 64, 48);
        movie.appendFrames(3);
        if (isNameTaken) {
            std::ofstream(path) << "precious";
        }
        movie.finish();
        const auto outcome = recorder.outcome(path);
        return outcome ? outcome->localizedDescription : "none";
    }

    bool isNameTaken = false;
};

TEST_F(MoviePublishing, NeedsNeitherExclusiveRenameNorLinks) {
    for (const auto& [first, second] : {std::pair(EINVAL, 0), std::pair(EINVAL, EPERM),
                                        std::pair(ENOSYS, EOPNOTSUPP), std::pair(EPERM, EPERM)}) {
        renameError = first;
        linkError = second;
        EXPECT_EQ(failure(), "none");
        EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
        EXPECT_FALSE(boxesOf(path).empty());
        std::remove(path.c_str());
    }
}

TEST_F(MoviePublishing, GetsItsNameAlthoughSignalsInterruptTheRenaming) {
    for (const int first : {0, EINVAL}) {
        renameError = first;
        interruptions = 3;
        EXPECT_EQ(failure(), "none");
        EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
        std::remove(path.c_str());
    }
}

TEST_F(MoviePublishing, AMovieWhoseNameIsTakenIsKeptUnderAnother) {
    isNameTaken = true;
    for (const int number : {0, EINVAL}) {
        renameError = number;
        linkError = number;
        EXPECT_THAT(failure(), AllOf(HasSubstr("already there"), HasSubstr("'m-2.mov'")));
        EXPECT_EQ(contents(path), "precious");
        EXPECT_THAT(folder.names(), ElementsAre("m-2.mov", "m.mov"));
        EXPECT_FALSE(boxesOf(folder / "m-2.mov").empty());
        std::remove(path.c_str());
        std::remove((folder / "m-2.mov").c_str());
    }
}

TEST_F(MoviePublishing, AMovieThatCannotBeRenamedIsKeptAndTheNextWriterPublishesIt) {
    renameError = EIO;
    EXPECT_THAT(failure(), HasSubstr("'.m.mov.vistrane-part'"));
    EXPECT_THAT(folder.names(), ElementsAre(".m.mov.vistrane-part"));
    renameError = 0;
    {
        const auto other = create(folder / "other.mov");
        EXPECT_FALSE(other.error);
        EXPECT_THAT(folder.names(), ElementsAre(".other.mov.vistrane-part", "m.mov"));
    }
    EXPECT_FALSE(boxesOf(path).empty());
}

TEST_F(MoviePublishing, AMovieThatIsNotOnTheDiskForSureDoesNotGetItsName) {
    syncError = EIO;
    EXPECT_THAT(failure(), AllOf(HasSubstr("brought to the disk"), HasSubstr("'m-2.mov'")));
    EXPECT_THAT(folder.names(), ElementsAre("m-2.mov"));
    EXPECT_FALSE(boxesOf(folder / "m-2.mov").empty());
}

TEST_F(MoviePublishing, AMovieWhoseHiddenFileWasRemovedIsNotSaidToBeKept) {
    OpenMovie movie = open(64, 48);
    movie.appendFrames(3);
    ASSERT_EQ(std::remove((folder / ".m.mov.vistrane-part").c_str()), 0);
    movie.finish();
    const auto outcome = observer.outcome(path);
    ASSERT_TRUE(outcome);
    EXPECT_THAT(outcome->localizedDescription, HasSubstr("was removed meanwhile"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MoviePublishing, EndingWaitsForAMovieThatIsBeingFinishedAndCancelsOthers) {
    OpenMovie finishing = open(320, 240);
    finishing.appendFrames(40, noise);
    OpenMovie unfinished(movies, folder / "n.mov", 64, 48);
    unfinished.appendFrames(1);
    finishing.finish();
    movies.end(std::nullopt);
    EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
    EXPECT_FALSE(boxesOf(path).empty());
    EXPECT_TRUE(observer.hasOutcome(path));
    EXPECT_TRUE(create(folder / "o.mov").error);
}

TEST_F(MoviePublishing, EndingWithoutATimeoutLeftLeavesACompleteMovieOrNothing) {
    OpenMovie movie = open(320, 240);
    movie.appendFrames(40, noise);
    movie.finish();
    movies.end(std::chrono::milliseconds(0));
    // It may have been complete and be about to get its name.
    const bool isWhole = !observer.outcome(path);
    EXPECT_EQ(!boxesOf(path).empty(), isWhole);
    EXPECT_THAT(folder.names(), testing::SizeIs(isWhole ? 1 : 0));
}

TEST_F(MoviePublishing, EndingWhileTheDiskHangsRemovesWhatIsIncompleteOnly) {
    // In the first call the movie is brought to the disk, in the second the mark that it is
    // complete.
    for (const int call : {1, 2}) {
        RecordingObserver recorder;
        Movies making(recorder);
        OpenMovie movie(making, path, 64, 48);
        movie.appendFrames(3);
        syncs = 0;
        hangingSync = call;
        movie.finish();
        while (syncs < call) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        making.end(std::chrono::milliseconds(0));
        if (call == 1) {
            EXPECT_THAT(folder.names(), IsEmpty());
        } else {
            EXPECT_THAT(folder.names(), ElementsAre(".m.mov.vistrane-part"));
            EXPECT_FALSE(boxesOf(folder / ".m.mov.vistrane-part").empty());
        }
        hangingSync = 0;
        hangingSync.notify_all();
        EXPECT_EQ(recorder.outcome(path).has_value(), call == 1);
    }
    EXPECT_THAT(folder.names(), ElementsAre("m.mov"));
}

} // namespace
} // namespace vistrane
