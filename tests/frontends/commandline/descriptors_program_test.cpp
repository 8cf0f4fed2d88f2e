#include <chrono>
#include <csignal>
#include <thread>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"

namespace vistrane {
namespace {

using testing::IsEmpty;

/// Descriptors of files and cameras are close-on-exec.
using DescriptorsProgram = CommandLineTest;

TEST_F(DescriptorsProgram, AreCloseOnExecDuringACapture) {
    Program program(
        command({"capture", folder, "--demo-camera", "--device", "Demo Camera", "--interval", "1"}),
        options);
    for (int frames = 0; frames < 2; ++frames) {
        ASSERT_TRUE(program.nextLine());
        EXPECT_THAT(program.inheritable(), IsEmpty());
    }
    program.signal(SIGTERM);
    program.wait();
}

TEST_F(DescriptorsProgram, AreCloseOnExecDuringACompile) {
    for (const char* name : {"1.png", "2.png", "3.png"}) {
        writeFrame(folder + "/" + name, {.width = 1280, .height = 720, .isNoise = true});
    }
    Program program(command({"compile", folder, "--x264-preset", "medium"}), options);
    int looks = 0;
    while (!program.status()) {
        if (!namesEndingIn(".vistrane-part", folder).empty()) {
            EXPECT_THAT(program.inheritable(), IsEmpty());
            ++looks;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_GT(looks, 0);
    EXPECT_EQ(program.wait().status, 0);
}

} // namespace
} // namespace vistrane
