#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"

namespace vistrane {
namespace {

using testing::Gt;
using testing::IsEmpty;
using testing::SizeIs;

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
    if (std::string(VISTRANE_TEST_SANITIZE) != "") {
        GTEST_SKIP() << "The sanitizers open pipes to see whether memory can be read.";
    }
    // A compile that lasts, so that it is seen on a busy machine too.
    for (const char* name : {"1.png", "2.png", "3.png"}) {
        writeFrame(folder + "/" + name, {.width = 1280, .height = 720, .isNoise = true});
    }
    Program program(command({"compile", folder, "--x264-preset", "placebo"}), options);
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

/// The masks of blocked signals of a process's threads.
std::vector<std::uint64_t> signalMasks(pid_t process) {
    std::vector<std::uint64_t> masks;
    const std::string folder = "/proc/" + std::to_string(process) + "/task";
    for (const auto& thread : std::filesystem::directory_iterator(folder)) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("SigBlk:")) {
                masks.push_back(std::stoull(line.substr(7), nullptr, 16));
            }
        }
    }
    return masks;
}

TEST_F(DescriptorsProgram, NoThreadOfACaptureReceivesTheSignalOfAChild) {
    Program program(
        command({"capture", folder, "--demo-camera", "--device", "Demo Camera", "--interval", "1"}),
        options);
    ASSERT_TRUE(program.nextLine());
    const auto masks = signalMasks(program.process());
    EXPECT_THAT(masks, SizeIs(Gt(3)));
    for (const std::uint64_t mask : masks) {
        EXPECT_NE(mask & (std::uint64_t{1} << (SIGCHLD - 1)), 0);
    }
    program.signal(SIGTERM);
    program.wait();
}

} // namespace
} // namespace vistrane
