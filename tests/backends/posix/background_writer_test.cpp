#include "backends/posix/BackgroundWriter.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "backends/posix/Descriptor.h"
#include "tests/backends/posix/Pipe.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

/// Appends what the pipe holds, without waiting.
void readInto(std::string& text, const Pipe& pipe) {
    char bytes[1 << 16];
    for (ssize_t count = 1; count > 0;) {
        count = ::read(pipe.ends[0], bytes, sizeof bytes);
        text.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
}

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

TEST(BackgroundWriter, OfTooManyLinesTheNewestAreKeptAndTheOthersCounted) {
    Pipe pipe;
    constexpr int lines = 20000;
    BackgroundWriter writer(
        pipe.ends[1], [](int) {}, 1 << 16);
    for (int line = 1; line <= lines; ++line) {
        writer.write("line " + std::to_string(line) + "\n");
    }
    std::string text;
    ::fcntl(pipe.ends[0], F_SETFL, O_NONBLOCK);
    while (!writer.flush(std::chrono::milliseconds(1))) {
        readInto(text, pipe);
    }
    readInto(text, pipe);
    EXPECT_TRUE(text.ends_with("\nline 20000\n"));
    std::istringstream stream(text);
    int next = 1;
    int notes = 0;
    for (std::string line; std::getline(stream, line);) {
        int missing = 0;
        if (std::sscanf(line.c_str(), "vistrane: %d lines are left out here", &missing) == 1) {
            next += missing;
            ++notes;
        } else {
            EXPECT_EQ(line, "line " + std::to_string(next++));
        }
    }
    EXPECT_EQ(next, lines + 1);
    EXPECT_GE(notes, 1);
}

TEST(BackgroundWriter, ASlowReaderIsWaitedForAsLongAsItReads) {
    Pipe pipe;
    BackgroundWriter writer(pipe.ends[1], [](int) {});
    const std::string text(100000, 'x');
    writer.write(text);
    // Both times are longer than the pause together, and each piece is far shorter.
    constexpr std::chrono::milliseconds pause{2000};
    std::string arrived;
    std::thread reader([&] {
        char bytes[4096];
        while (arrived.size() < text.size()) {
            std::this_thread::sleep_for(pause / 20);
            const ssize_t count = ::read(pipe.ends[0], bytes, sizeof bytes);
            arrived.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
    });
    EXPECT_FALSE(writer.flush(pause / 10));
    EXPECT_TRUE(writer.flushWhileRead(pause));
    reader.join();
    EXPECT_EQ(arrived, text);
}

TEST(BackgroundWriter, AReaderThatReadsNothingIsNotWaitedFor) {
    // Stays open: the writer's thread goes on trying.
    static Pipe& pipe = *new Pipe;
    BackgroundWriter writer(pipe.ends[1], [](int) {});
    writer.write(std::string(100000, 'x'));
    EXPECT_FALSE(writer.flushWhileRead(std::chrono::milliseconds(10)));
}

TEST(BackgroundWriter, AfterAnErrorTheNextTextIsWritten) {
    // A file of limited length, as on a disk that is full for a while.
    WorkFolder folder;
    const Descriptor file(
        ::open((folder / "log").c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    std::atomic<int> reports{0};
    BackgroundWriter writer(file.number(), [&reports](int) { ++reports; });
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{10, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    for (const char* const text : {"12345678\n", "lost\n", "lost\n"}) {
        writer.write(text);
        writer.flush();
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    writer.write("next\n");
    EXPECT_FALSE(writer.flush()) << "some text was lost";
    EXPECT_EQ(writer.failure(), EFBIG);
    EXPECT_EQ(reports, 2);
    std::ifstream log(folder / "log");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(log), {}), "12345678\nlnext\n");
}

TEST(BackgroundWriter, AnErrorIsReported) {
    const Descriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    std::atomic<int> reported{0};
    BackgroundWriter writer(full.number(), [&reported](int error) { reported = error; });
    writer.write("text");
    EXPECT_FALSE(writer.flush());
    EXPECT_EQ(writer.failure(), ENOSPC);
    EXPECT_EQ(reported, ENOSPC);
}

} // namespace
} // namespace vistrane
