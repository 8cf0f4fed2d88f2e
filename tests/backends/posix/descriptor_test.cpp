#include "backends/posix/Descriptor.h"

#include <cerrno>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
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

TEST(SyncToDisk, IsNoErrorWhereThereIsNoDisk) {
    const Pipe pipe;
    EXPECT_EQ(syncToDisk(pipe.ends[1]), 0);
    EXPECT_EQ(syncToDisk(-1), EBADF);
}

} // namespace
} // namespace vistrane
