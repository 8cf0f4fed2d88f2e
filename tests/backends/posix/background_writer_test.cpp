#include "backends/posix/BackgroundWriter.h"

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

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

} // namespace
} // namespace vistrane
