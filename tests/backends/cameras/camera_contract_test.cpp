#include <fstream>
#include <iterator>

#include "backends/cameras/PhotoBytes.h"
#include "tests/backends/cameras/CameraTestBed.h"
#include "tests/backends/posix/TemporaryFolder.h"
#include "tests/contract/DataContract.h"
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

/// The bytes of stills.
class PhotoBytesBackend {
public:
    std::shared_ptr<NSData> data(const std::string& bytes) {
        return std::make_shared<PhotoBytes>(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    }
    std::string emptyFolder() { return folder_.path(); }
    void addFile(const std::string& path) { std::ofstream(path) << "other bytes"; }
    std::optional<std::string> contents(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return file
                   ? std::optional<std::string>(std::in_place, std::istreambuf_iterator<char>(file),
                                                std::istreambuf_iterator<char>())
                   : std::nullopt;
    }

private:
    TemporaryFolder folder_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Media, DataContract, PhotoBytesBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Media, DiscoveryContract, DemoCameraBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Media, PhotoContract, DemoCameraBackend, contract::Names);

} // namespace
} // namespace vistrane
