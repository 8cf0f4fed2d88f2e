#include "tests/backends/cameras/CameraTestBed.h"
#include "tests/contract/DiscoveryContract.h"
#include "tests/contract/PhotoContract.h"

namespace vistrane {
namespace {

/// The demo camera alone: nothing of the machine is asked.
class DemoCameraBackend {
public:
    Cameras& cameras() { return *bed_.cameras; }
    std::shared_ptr<AVCaptureDevice> camera() { return bed_.device("Demo Camera"); }
    bool runUntil(const std::function<bool()>& done) { return bed_.dispatch.runUntil(done); }

private:
    static CameraOptions demoOnly() {
        CameraOptions options;
        options.findsCameras = false;
        options.demoCamera = true;
        return options;
    }

    CameraTestBed bed_{demoOnly()};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Media, DiscoveryContract, DemoCameraBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Media, PhotoContract, DemoCameraBackend, contract::Names);

} // namespace
} // namespace vistrane
