#include "tests/backends/cameras/CameraTestBed.h"
#include "tests/contract/DiscoveryContract.h"
#include "tests/contract/PhotoContract.h"

namespace vistrane {
namespace {

/// The demo camera alone: nothing of the machine is asked.
class DemoCameraBackend {
public:
    Cameras& cameras() { return cameras_; }
    std::shared_ptr<AVCaptureDevice> camera() {
        const auto devices = cameras_
                                 .discoverySessionWithDeviceTypes(
                                     {AVCaptureDeviceTypeExternalUnknown}, AVMediaTypeVideo,
                                     AVCaptureDevicePositionUnspecified)
                                 ->devices();
        return devices.empty() ? nullptr : devices.front();
    }
    bool runUntil(const std::function<bool()>& done) { return dispatch_.runUntil(done); }

private:
    static CameraOptions demoOnly() {
        CameraOptions options;
        options.findsCameras = false;
        options.demoCamera = true;
        return options;
    }

    HandDrainedDispatch dispatch_;
    RecordingObserver observer_{dispatch_};
    Cameras cameras_{dispatch_, observer_, demoOnly()};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Media, DiscoveryContract, DemoCameraBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Media, PhotoContract, DemoCameraBackend, contract::Names);

} // namespace
} // namespace vistrane
