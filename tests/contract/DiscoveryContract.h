#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/AVCaptureDevice.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Tests the discovery of cameras. A backend has
///
///     auto& cameras();       an AVFoundation, or its capture half, with at least one camera, that
///                            works and is for video only
template <typename Backend>
class DiscoveryContract : public ::testing::Test {
protected:
    /// Queries as the program does, with a null among the types.
    std::shared_ptr<AVCaptureDeviceDiscoverySession> discover() {
        return backend_.cameras().discoverySessionWithDeviceTypes(
            {AVCaptureDeviceTypeBuiltInWideAngleCamera, AVCaptureDeviceTypeExternalUnknown,
             std::nullopt},
            AVMediaTypeVideo, AVCaptureDevicePositionUnspecified);
    }
    static std::vector<std::string> names(const AVCaptureDeviceDiscoverySession& session) {
        std::vector<std::string> names;
        for (const auto& device : session.devices()) {
            names.push_back(device->localizedName());
        }
        return names;
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(DiscoveryContract);

TYPED_TEST_P(DiscoveryContract, EveryDeviceHasANameAndPictures) {
    const auto session = this->discover();
    ASSERT_TRUE(session);
    ASSERT_FALSE(session->devices().empty());
    for (const auto& device : session->devices()) {
        ASSERT_TRUE(device);
        EXPECT_FALSE(device->localizedName().empty());
        EXPECT_TRUE(device->hasMediaType(AVMediaTypeVideo) ||
                    device->hasMediaType(AVMediaTypeMuxed));
    }
}

TYPED_TEST_P(DiscoveryContract, ACameraForVideoSaysSo) {
    const auto device = this->discover()->devices().front();
    EXPECT_TRUE(device->hasMediaType(AVMediaTypeVideo));
    EXPECT_FALSE(device->hasMediaType(AVMediaTypeMuxed));
    EXPECT_FALSE(device->hasMediaType(AVMediaTypeAudio));
    EXPECT_TRUE(device->supportsAVCaptureSessionPreset(AVCaptureSessionPresetPhoto));
    EXPECT_TRUE(device->supportsAVCaptureSessionPreset(AVCaptureSessionPresetHigh));
}

TYPED_TEST_P(DiscoveryContract, ASessionKeepsItsAnswer) {
    const auto session = this->discover();
    const auto other = this->discover();
    EXPECT_EQ(session->devices(), session->devices());
    EXPECT_EQ(this->names(*other), this->names(*session));
}

TYPED_TEST_P(DiscoveryContract, DevicesOutliveTheirSession) {
    const auto devices = this->discover()->devices();
    const auto result = this->backend_.cameras().deviceInputWithDevice(devices.front());
    ASSERT_TRUE(result.input) << describe(result.error);
    EXPECT_EQ(result.input->device(), devices.front());
}

REGISTER_TYPED_TEST_SUITE_P(DiscoveryContract, EveryDeviceHasANameAndPictures,
                            ACameraForVideoSaysSo, ASessionKeepsItsAnswer,
                            DevicesOutliveTheirSession);

} // namespace vistrane
