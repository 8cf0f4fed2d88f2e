#include "backends/sim/Sim.h"
#include "tests/contract/AssetWriterContract.h"
#include "tests/contract/DataContract.h"
#include "tests/contract/DiscoveryContract.h"
#include "tests/contract/ImageContract.h"
#include "tests/contract/PhotoContract.h"

namespace vistrane {
namespace {

/// The test's part in the script: movies end and stills are delivered when they are waited for.
class SimMediaBackend {
public:
    AVFoundation& movies() { return sim_.platform().avFoundation; }
    AVFoundation& cameras() { return sim_.platform().avFoundation; }
    AppKit& pictures() { return sim_.platform().appKit; }
    CoreVideo& coreVideo() { return sim_.drawing(); }

    std::string emptyFolder() {
        sim_.files().addFolder("/f");
        return "/f";
    }
    void addFile(const std::string& path) { sim_.files().addFile(path, "other bytes"); }
    std::optional<std::string> contents(const std::string& path) {
        return sim_.files().contents(path);
    }
    bool exists(const std::string& path) { return sim_.files().exists(path); }
    void awaitEnd(const std::string&) {
        while (sim_.movies().finishingWriters() > 0) {
            sim_.movies().finish();
        }
    }

    std::string addPicture(NSSize points) {
        sim_.files().addPicture("/f/picture.png", points);
        return "/f/picture.png";
    }
    std::string addDensePicture(NSSize points) { return addPicture(points); }
    std::string addDamagedPicture() {
        sim_.files().addDamagedPicture("/f/damaged.png");
        return "/f/damaged.png";
    }
    std::shared_ptr<NSData> data(const std::string& bytes) { return sim_.pictures().data(bytes); }

    void putPicture(const std::string& path, NSSize points) {
        sim_.files().addPicture(path, points);
    }
    void damageFile(const std::string& path) { sim_.files().addDamagedPicture(path); }
    void removeFile(const std::string& path) { sim_.files().remove(path); }
    void settle() {}
    void awaitExpected() {}

    std::shared_ptr<AVCaptureDevice> camera() { return sim_.cameras().add("Camera"); }
    bool runUntil(const std::function<bool()>& done) {
        while (!done() && !sim_.cameras().pendingStills().empty()) {
            sim_.at(0.0, [this] { sim_.cameras().deliverPhoto("still"); });
            sim_.advance(0.0);
        }
        return done();
    }

private:
    Sim sim_;
};

class SimDiscoveryBackend {
public:
    SimDiscoveryBackend() {
        sim_.cameras().add("Camera");
        sim_.cameras().add("Other Camera");
    }
    AVFoundation& cameras() { return sim_.platform().avFoundation; }

private:
    Sim sim_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Sim, AssetWriterContract, SimMediaBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, DataContract, SimMediaBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, DiscoveryContract, SimDiscoveryBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, ImageContract, SimMediaBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, PhotoContract, SimMediaBackend, contract::Names);

} // namespace
} // namespace vistrane
