#include <chrono>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"

namespace vistrane {
namespace {

/// How many arenas besides the first a process has. Each begins at a multiple of 64 MiB, with its
/// used part before a reserved one. For glibc.
int arenasOf(pid_t process) {
    constexpr std::uint64_t size = std::uint64_t{64} << 20;
    int count = 0;
    std::uint64_t arena = 0;
    std::uint64_t end = 0;
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uint64_t from = 0;
        std::uint64_t to = 0;
        char dash = 0;
        std::string access;
        fields >> std::hex >> from >> dash >> to >> access;
        count += arena != 0 && access == "---p" && from == end && to == arena + size ? 1 : 0;
        arena = access == "rw-p" && from % size == 0 ? from : 0;
        end = to;
    }
    return count;
}

class MemoryProgram : public CommandLineTest {
protected:
    MemoryProgram() { options.timeout = std::chrono::minutes(18); }

    /// The peak memory of a compile of that many frames, in KiB.
    long peakFor(int count) {
        FrameForm form;
        form.width = 1920;
        form.height = 1080;
        const std::string place = work.makeFolder(std::to_string(count));
        for (int number = 0; number < count; ++number) {
            const std::string path = place + "/f" + std::to_string(number) + ".png";
            if (number < 4) {
                form.colour = {60 * number, 255 - 60 * number, 100};
                writeFrame(path, form);
            } else {
                std::filesystem::create_symlink("f" + std::to_string(number % 4) + ".png", path);
            }
        }
        // Younger frames are not decoded ahead, which takes memory that does not grow either.
        std::this_thread::sleep_for(std::chrono::milliseconds(2500));
        const Ended ended = run({"compile", "--x264-preset", "ultrafast", place});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return ended.peakKibibytes;
    }
};

TEST_F(MemoryProgram, DoesNotGrowWithTheNumberOfFrames) {
    const long few = peakFor(50);
    const long many = peakFor(1000);
    // What the allocator keeps depends on which thread frees first: up to 11 MB more in one run
    // than in another.
    EXPECT_LT(many, few + 32 * 1024);
}

TEST_F(MemoryProgram, IsInOneArena) {
    Program program(
        command({"capture", folder, "--demo-camera", "--device", "Demo Camera", "--interval", "1"}),
        options);
    for (int frames = 0; frames < 2; ++frames) {
        ASSERT_TRUE(program.nextLine());
    }
    EXPECT_EQ(arenasOf(program.process()), 0);
    program.signal(SIGTERM);
    program.wait();
}

} // namespace
} // namespace vistrane
