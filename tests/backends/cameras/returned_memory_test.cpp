#include <chrono>
#include <thread>

#include "tests/backends/cameras/CameraTestBed.h"
#include "tests/support/FreedMemory.h"

namespace vistrane {
namespace {

TEST(ReturnedMemory, ACameraThatIsStoppedReturnsWhatMallocKeeps) {
    CameraOptions options;
    options.demoCamera = true;
    CameraTestBed bed{options};
    ASSERT_TRUE(bed.pick("Demo Camera"));
    ASSERT_EQ(bed.still(), "");
    const FreedMemory freed;
    ASSERT_GT(freed.residentShare(), 0.9);
    bed.session->stopRunning();
    // If the camera takes long to stop, it does so in the background.
    for (int tries = 0; tries < 600 && freed.residentShare() > 0.5; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_LT(freed.residentShare(), 0.5);
}

} // namespace
} // namespace vistrane
