#include "backends/console/ConsoleOutput.h"

#include <chrono>
#include <cstdlib>
#include <limits>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "tests/backends/posix/Pipe.h"

namespace vistrane {
namespace {

/// Reads what is available.
std::string readAll(ConsoleOutput& output, int descriptor) {
    output.flush(std::chrono::minutes(1));
    std::string text;
    for (;;) {
        pollfd watched{descriptor, POLLIN, 0};
        char bytes[4096];
        if (poll(&watched, 1, 0) != 1 || (watched.revents & POLLIN) == 0) {
            return text;
        }
        const ssize_t count = read(descriptor, bytes, sizeof bytes);
        if (count <= 0) {
            return text;
        }
        text.append(bytes, static_cast<std::size_t>(count));
    }
}

/// A terminal of a given width; what is written to it comes out unchanged.
struct Terminal {
    explicit Terminal(unsigned short columns) {
        grantpt(outer);
        unlockpt(outer);
        inner = open(ptsname(outer), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings{};
        tcgetattr(inner, &settings);
        settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        tcsetattr(inner, TCSANOW, &settings);
        const winsize size{24, columns, 0, 0};
        ioctl(inner, TIOCSWINSZ, &size);
    }
    ~Terminal() {
        close(inner);
        close(outer);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int outer = posix_openpt(O_RDWR | O_NOCTTY);
    int inner = -1;
};

TEST(ConsoleOutput, ALineIsWrittenUnchanged) {
    Pipe pipe;
    ConsoleOutput output(pipe.ends[1]);
    output.writeLine("one %s \xff");
    output.writeLine("");
    EXPECT_EQ(readAll(output, pipe.ends[0]), "one %s \xff\n\n");
}

TEST(ConsoleOutput, WithoutATerminalThereIsNoBar) {
    Pipe pipe;
    ConsoleOutput output(pipe.ends[1]);
    output.showProgress(3.0, 6.0);
    output.writeLine("line");
    EXPECT_EQ(readAll(output, pipe.ends[0]), "line\n");
}

TEST(ConsoleOutput, TheBarFitsTheTerminal) {
    Terminal terminal(29);
    ConsoleOutput output(terminal.inner);
    output.showProgress(3.0, 6.0);
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[K[##########..........] 50 %");
}

TEST(ConsoleOutput, TheTextStandsBesideTheBar) {
    Terminal terminal(40);
    ConsoleOutput output(terminal.inner);
    output.showProgress(3.0, 6.0, "3 of 6");
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[K[############............] 50 % 3 of 6");
}

TEST(ConsoleOutput, WithoutRoomForTheTextThereIsTheBar) {
    Terminal terminal(29);
    ConsoleOutput output(terminal.inner);
    output.showProgress(3.0, 6.0, "3 of 6 frames");
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[K[##########..........] 50 %");
}

TEST(ConsoleOutput, AStatusIsTheLastLineAndFitsTheTerminal) {
    Terminal terminal(10);
    ConsoleOutput output(terminal.inner);
    output.showStatus("12 saved, next");
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[K12 saved,");
    output.writeLine("line");
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[Kline\n12 saved,");
    output.showStatus("");
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[K");
}

TEST(ConsoleOutput, WithoutATerminalThereIsNoStatus) {
    Pipe pipe;
    ConsoleOutput output(pipe.ends[1]);
    EXPECT_FALSE(output.isTerminal());
    output.showStatus("12 saved");
    EXPECT_EQ(readAll(output, pipe.ends[0]), "");
}

TEST(ConsoleOutput, ATerminalWithoutRoomShowsWhatFits) {
    for (unsigned short columns = 1; columns < 16; ++columns) {
        Terminal terminal(columns);
        ConsoleOutput output(terminal.inner);
        output.showProgress(6.0, 6.0);
        EXPECT_LT(readAll(output, terminal.outer).size(), columns + sizeof "\r\x1b[K" - 1)
            << columns;
    }
}

TEST(ConsoleOutput, ALineGoesAboveTheBar) {
    Terminal terminal(29);
    ConsoleOutput output(terminal.inner);
    output.showProgress(3.0, 6.0);
    readAll(output, terminal.outer);
    output.writeLine("line");
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[Kline\n[##########..........] 50 %");
}

TEST(ConsoleOutput, TheSameBarIsNotDrawnAgain) {
    Terminal terminal(29);
    ConsoleOutput output(terminal.inner);
    output.showProgress(3.0, 6.0);
    readAll(output, terminal.outer);
    output.showProgress(3.0, 6.0);
    EXPECT_EQ(readAll(output, terminal.outer), "");
}

TEST(ConsoleOutput, ZeroRemovesTheBar) {
    Terminal terminal(29);
    ConsoleOutput output(terminal.inner);
    output.showProgress(3.0, 6.0);
    readAll(output, terminal.outer);
    output.showProgress(0.0, 6.0);
    EXPECT_EQ(readAll(output, terminal.outer), "\r\x1b[K");
    output.writeLine("line");
    EXPECT_EQ(readAll(output, terminal.outer), "line\n");
}

TEST(ConsoleOutput, AnyNumbersAreTaken) {
    using Limits = std::numeric_limits<double>;
    Terminal terminal(29);
    ConsoleOutput output(terminal.inner);
    const double numbers[] = {Limits::quiet_NaN(),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::max(),
                              Limits::denorm_min(),
                              1.0,
                              -1.0};
    for (const double value : numbers) {
        for (const double maximum : numbers) {
            output.showProgress(value, maximum);
            EXPECT_LT(readAll(output, terminal.outer).size(), 40U);
        }
    }
}

TEST(ConsoleOutput, LinesOfManyThreadsAreNotMixed) {
    Pipe pipe;
    ConsoleOutput output(pipe.ends[1]);
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([&output, letter] {
            for (int line = 0; line < 50; ++line) {
                output.writeLine(std::string(100, letter));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::string text = readAll(output, pipe.ends[0]);
    ASSERT_EQ(text.size(), 4U * 50 * 101);
    for (std::size_t at = 0; at < text.size(); at += 101) {
        std::string line(100, text[at]);
        line.push_back('\n');
        EXPECT_EQ(text.substr(at, 101), line);
    }
}

TEST(ConsoleOutput, AReaderThatStopsDoesNotStopTheProgram) {
    Pipe pipe;
    fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK);
    ConsoleOutput output(pipe.ends[1]);
    const std::string line(1000000, 'x');
    output.writeLine(line);
    output.flush(std::chrono::milliseconds(1));
    std::string text;
    while (text.size() < line.size() + 1) {
        char bytes[65536];
        const ssize_t count = read(pipe.ends[0], bytes, sizeof bytes);
        ASSERT_GT(count, 0);
        text.append(bytes, static_cast<std::size_t>(count));
    }
    EXPECT_EQ(text, line + "\n");
}

TEST(ConsoleOutput, ABadDescriptorDoesNoHarm) {
    ConsoleOutput output(-1);
    output.writeLine("lost");
    output.showProgress(1.0, 2.0);
}

} // namespace
} // namespace vistrane
