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

    /// The log, once it has that many lines. The threads that open addresses write it, so a test
    /// waits for each.
    std::vector<std::string> lines(std::size_t count) {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(
            logged_.wait_for(lock, std::chrono::minutes(1), [&] { return log_.size() >= count; }));
        return log_;
    }

    const std::string before_ = std::getenv("PATH");
    WorkFolder folder_;
    const std::string opened_ = folder_ / "opened";
    std::mutex mutex_;
    std::condition_variable logged_;
    std::vector<std::string> log_;
    std::vector<std::string> addresses_;
    std::string written_;
    std::function<void(std::optional<NSError>)> finished_;
    QtWorkspace workspace_{
        [this](const std::string& path, std::function<void(std::optional<NSError>)> callback) {
            finished_ = std::move(callback);
            return path == written_;
        },
        [this](const std::string& sentence, const std::string& address) {
            const std::lock_guard lock(mutex_);
            log_.push_back(sentence);
            addresses_.push_back(address);
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
    EXPECT_THAT(lines(2), ::testing::Contains(::testing::HasSubstr("/tmp/a \xef\xbf\xbd.mov")));
}

TEST_F(QtWorkspaceTest, ALinkThatDoesNotOpenIsReportedWithItsAddress) {
    workspace_.openURL(NSURL::URLWithString("https://a.example"));
    EXPECT_THAT(lines(1).at(0), ::testing::HasSubstr("opens 'https://a.example'"));
    EXPECT_EQ(addresses_.front(), "https://a.example");
}

TEST_F(QtWorkspaceTest, AFileThatIsMissingIsNotAMissingProgram) {
    endOpeningWith(2);
    workspace_.openURL(NSURL::fileURLWithPath("/tmp/b.mov"));
    EXPECT_THAT(lines(1).at(0), ::testing::HasSubstr("not there"));
}

TEST_F(QtWorkspaceTest, AMovieIsOpenedWhenItIsWhole) {
    written_ = "/tmp/movie.mov";
    workspace_.openURL(NSURL::fileURLWithPath(written_));
    workspace_.openURL(NSURL::URLWithString("first"));
    EXPECT_EQ(openedAfter(1), "first|");
    finished_(std::nullopt);
    EXPECT_EQ(openedAfter(2), "first|/tmp/movie.mov|");
    lines(2);
}

TEST_F(QtWorkspaceTest, AMovieThatFailsIsNeverOpened) {
    written_ = "/tmp/movie.mov";
    workspace_.openURL(NSURL::fileURLWithPath(written_));
    finished_(NSError{"domain", 1, "no"});
    workspace_.openURL(NSURL::URLWithString("last"));
    EXPECT_EQ(openedAfter(1), "last|");
    lines(1);
}

} // namespace
} // namespace vistrane
