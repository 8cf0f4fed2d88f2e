#include "backends/qt/system/QtWorkspace.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

/// With a fake xdg-open that records its argument and fails.
class QtWorkspaceTest : public ::testing::Test {
protected:
    QtWorkspaceTest() {
        endOpeningWith(3);
        ::setenv("PATH", (folder_.path() + ":" + before_).c_str(), 1);
    }
    ~QtWorkspaceTest() override { ::setenv("PATH", before_.c_str(), 1); }

    void endOpeningWith(int status) const {
        const std::string program = folder_ / "xdg-open";
        std::ofstream(program) << "#!/bin/sh\nprintf '%s|' \"$@\" >> '" << opened_ << "'\nexit "
                               << status << '\n';
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    }

    std::string opened() const {
        std::ifstream file(opened_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// What was opened, once it is that many addresses or a minute has passed.
    std::string openedAfter(std::ptrdiff_t count) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        std::string text = opened();
        while (std::count(text.begin(), text.end(), '|') < count &&
               std::chrono::steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            text = opened();
        }
        return text;
    }

    /// The first line of the log, once there is one.
    std::string firstLine() {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(logged_.wait_for(lock, std::chrono::minutes(1), [&] { return !log_.empty(); }));
        return log_.empty() ? "" : log_.front();
    }

    const std::string before_ = std::getenv("PATH");
    WorkFolder folder_;
    const std::string opened_ = folder_ / "opened";
    std::mutex mutex_;
    std::condition_variable logged_;
    std::vector<std::string> log_;
    std::string written_;
    std::function<void(std::optional<NSError>)> finished_;
    QtWorkspace workspace_{
        [this](const std::string& path, std::function<void(std::optional<NSError>)> callback) {
            finished_ = std::move(callback);
            return path == written_;
        },
        [this](const std::string& line) {
            const std::lock_guard lock(mutex_);
            log_.push_back(line);
            logged_.notify_all();
        }};
};

TEST_F(QtWorkspaceTest, AddressesAndPathsArePassedUnchanged) {
    const std::string mail = "mailto:a%40b.example?SUBJECT=x%20y&BODY=%0A";
    EXPECT_TRUE(workspace_.openURL(NSURL::URLWithString(mail)));
    EXPECT_EQ(openedAfter(1), mail + "|");
    // No movie writer has this file, so it is opened at once.
    workspace_.openURL(NSURL::fileURLWithPath("/tmp/a \xff.mov"));
    EXPECT_EQ(openedAfter(2), mail + "|/tmp/a \xff.mov|");
    EXPECT_THAT(firstLine(), ::testing::HasSubstr("/tmp/a \xef\xbf\xbd.mov"));
}

TEST_F(QtWorkspaceTest, ALinkThatDoesNotOpenIsNotReported) {
    workspace_.openURL(NSURL::URLWithString("https://a.example"));
    openedAfter(1);
    workspace_.openURL(NSURL::fileURLWithPath("/tmp/b.mov"));
    EXPECT_THAT(firstLine(), ::testing::HasSubstr("/tmp/b.mov"));
}

TEST_F(QtWorkspaceTest, AFileThatIsMissingIsNotAMissingProgram) {
    endOpeningWith(2);
    workspace_.openURL(NSURL::fileURLWithPath("/tmp/b.mov"));
    EXPECT_THAT(firstLine(), ::testing::HasSubstr("not there"));
}

TEST_F(QtWorkspaceTest, AMovieIsOpenedWhenItIsWhole) {
    written_ = "/tmp/movie.mov";
    workspace_.openURL(NSURL::fileURLWithPath(written_));
    workspace_.openURL(NSURL::URLWithString("first"));
    EXPECT_EQ(openedAfter(1), "first|");
    finished_(std::nullopt);
    EXPECT_EQ(openedAfter(2), "first|/tmp/movie.mov|");
    // The thread that opened it writes to the log, which must live until then.
    EXPECT_NE(firstLine(), "");
}

TEST_F(QtWorkspaceTest, AMovieThatFailsIsNeverOpened) {
    written_ = "/tmp/movie.mov";
    workspace_.openURL(NSURL::fileURLWithPath(written_));
    finished_(NSError{"domain", 1, "no"});
    workspace_.openURL(NSURL::URLWithString("last"));
    EXPECT_EQ(openedAfter(1), "last|");
}

} // namespace
} // namespace vistrane
