#include "backends/posix/BackgroundWriter.h"

#include <atomic>
#include <cerrno>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "backends/posix/Descriptor.h"
#include "tests/backends/posix/Pipe.h"

namespace vistrane {
namespace {

TEST(BackgroundWriter, AReaderThatDoesNotReadBlocksNobodyAndTakesBoundedMemory) {
    Pipe pipe;
    BackgroundWriter writer(
        pipe.ends[1], [](int) {}, 1 << 16);
    const std::string text(1000, 'x');
    for (int times = 0; times < 10000; ++times) {
        writer.write(text);
    }
    std::size_t arrived = 0;
    std::string bytes(1 << 16, '\0');
    ::fcntl(pipe.ends[0], F_SETFL, O_NONBLOCK);
    while (!writer.flush(std::chrono::milliseconds(1))) {
        const ssize_t count = ::read(pipe.ends[0], bytes.data(), bytes.size());
        arrived += static_cast<std::size_t>(count > 0 ? count : 0);
    }
    EXPECT_LT(arrived, 10000 * text.size() / 2);
}

TEST(BackgroundWriter, AnErrorIsReportedAndEndsTheWriting) {
    const Descriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    std::atomic<int> reported{0};
    BackgroundWriter writer(full.number(), [&reported](int error) { reported = error; });
    writer.write("text");
    EXPECT_FALSE(writer.flush());
    EXPECT_EQ(writer.failure(), ENOSPC);
    EXPECT_EQ(reported, ENOSPC);
    writer.write("more");
    EXPECT_FALSE(writer.flush());
}

} // namespace
} // namespace vistrane
