#include "backends/posix/Descriptor.h"

#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/backends/posix/Pipe.h"

namespace vistrane {
namespace {

bool isOpen(int number) {
    return ::fcntl(number, F_GETFD) >= 0;
}

TEST(Descriptor, IsClosedAtTheEndOfItsScopeUnlessReleasedOrMoved) {
    const int number = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(number, 0);
    { EXPECT_EQ(Descriptor(number).release(), number); }
    EXPECT_TRUE(isOpen(number));
    {
        Descriptor first(number);
        const Descriptor second(std::move(first));
        EXPECT_EQ(second.number(), number);
        EXPECT_EQ(first.close(), 0); // NOLINT(bugprone-use-after-move): it owns none any more
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(WriteAll, WaitsForRoomInANonBlockingPipe) {
    const Pipe pipe;
    ::fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK);
    const std::string text(1 << 20, 'x');
    std::string arrived;
    std::thread reader([&] {
        char part[4096];
        while (arrived.size() < text.size()) {
            arrived.append(part, static_cast<std::size_t>(::read(pipe.ends[0], part, sizeof part)));
        }
    });
    EXPECT_EQ(writeAll(pipe.ends[1], text.data(), text.size()), 0);
    reader.join();
    EXPECT_EQ(arrived, text);
}

TEST(WriteAll, ReturnsTheErrorNumber) {
    EXPECT_EQ(writeAll(-1, "x", 1), EBADF);
    const Descriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(writeAll(full.number(), "x", 1), ENOSPC);
    const Pipe pipe;
    EXPECT_EQ(writeAll(pipe.ends[1], "x", 1, 7), ESPIPE);
}

TEST(FreeDescriptors, AreCountedUpToTheLimit) {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const Descriptor last(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100));
    const Descriptor high(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, last.number() + 1));
    for (const int more : {0, 5}) {
        const rlimit few{static_cast<rlim_t>(high.number() + 1 + more), before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
        std::size_t free = 0;
        while (hasFreeDescriptors(free + 1)) {
            ++free;
        }
        std::vector<Descriptor> opened;
        for (int number = ::dup(STDERR_FILENO); number >= 0; number = ::dup(STDERR_FILENO)) {
            opened.emplace_back(number);
        }
        EXPECT_EQ(free, opened.size());
        EXPECT_FALSE(hasFreeDescriptors(1));
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST(SyncToDisk, IsNoErrorWhereThereIsNoDisk) {
    const Pipe pipe;
    EXPECT_EQ(syncToDisk(pipe.ends[1]), 0);
    EXPECT_EQ(syncToDisk(-1), EBADF);
}

} // namespace
} // namespace vistrane
