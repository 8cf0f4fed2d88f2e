#include <chrono>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"

namespace vistrane {
namespace {

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
        const Ended ended = run({"compile", "--x264-preset", "ultrafast", place});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return ended.peakKibibytes;
    }
};

TEST_F(MemoryProgram, DoesNotGrowWithTheNumberOfFrames) {
    const long few = peakFor(50);
    const long many = peakFor(1000);
    EXPECT_LT(many, few + 20 * 1024);
}

} // namespace
} // namespace vistrane
