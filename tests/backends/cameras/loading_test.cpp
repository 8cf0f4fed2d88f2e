#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "tests/backends/cameras/CameraTestBed.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

CameraOptions demoOnly() {
    CameraOptions options;
    options.findsCameras = false;
    options.demoCamera = true;
    options.reappear = std::chrono::milliseconds(100);
    return options;
}

/// Lists the cameras in a process in which GStreamer is not loaded yet, with a plugin scanner that
/// never answers. Writes the messages to standard error and ends the process.
[[noreturn]] void listWithAHangingScanner(const std::string& folder, bool findsCameras) {
    const std::string scanner = folder + "/scanner";
    // Ends with the process that it hangs for.
    std::ofstream(scanner) << "#!/bin/sh\ncat >/dev/null\n";
    std::filesystem::permissions(scanner, std::filesystem::perms(0700));
    for (const char* const name : {"GST_PLUGIN_SCANNER", "GST_PLUGIN_SCANNER_1_0"}) {
        ::setenv(name, scanner.c_str(), 1);
    }
    for (const char* const name : {"GST_REGISTRY", "GST_REGISTRY_1_0"}) {
        ::setenv(name, (folder + "/registry").c_str(), 1);
    }
    CameraOptions options = demoOnly();
    options.findsCameras = findsCameras;
    options.loading = std::chrono::milliseconds(300);
    CameraTestBed bed(options);
    const std::size_t count = bed.devices().size();
    for (const std::string& message : bed.observer.messages()) {
        std::fprintf(stderr, "%s\n", message.c_str());
    }
    std::_Exit(count == 0 ? 0 : 1);
}

TEST(LoadingDeathTest, AHangingPluginScannerIsReportedAndNotWaitedFor) {
    // In a process of its own, which starts anew.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const bool findsCameras : {false, true}) {
        const WorkFolder folder;
        EXPECT_EXIT(listWithAHangingScanner(folder.path(), findsCameras),
                    testing::ExitedWithCode(0),
                    "GStreamer did not load its plugins within 300 ms.*gst-plugin-scanner");
    }
}

/// While it lives, only this many descriptors can be opened.
class FewDescriptors {
public:
    explicit FewDescriptors(int count) {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        rlimit few{0, before_.rlim_max};
        for (int free = 0; free < count; ++few.rlim_cur) {
            free += ::fcntl(static_cast<int>(few.rlim_cur), F_GETFD) == -1 ? 1 : 0;
        }
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit before_{};
};

TEST(FewDescriptorsLeft, NoCameraIsListedAndTheReasonIsTold) {
    CameraTestBed bed(demoOnly());
    {
        const FewDescriptors few(20);
        EXPECT_THAT(bed.devices(), IsEmpty());
        EXPECT_THAT(bed.observer.messages(), ElementsAre(HasSubstr("too many files are open")));
    }
    EXPECT_THAT(bed.devices(), SizeIs(1));
}

TEST(FewDescriptorsLeft, NoCameraIsOpenedAndTheReasonIsTold) {
    CameraTestBed bed(demoOnly());
    const auto device = bed.device(demoCameraName);
    ASSERT_TRUE(device);
    {
        const FewDescriptors few(20);
        const auto refused = bed.cameras->deviceInputWithDevice(device);
        ASSERT_TRUE(refused.error);
        EXPECT_THAT(refused.error->localizedDescription, HasSubstr("too many files are open"));
    }
    EXPECT_TRUE(bed.cameras->deviceInputWithDevice(device).input);
}

} // namespace
} // namespace vistrane
