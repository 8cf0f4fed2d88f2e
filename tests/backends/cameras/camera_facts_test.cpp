#include "backends/cameras/camera_facts.h"

#include <gmock/gmock.h>

namespace vistrane {
namespace {

using testing::ElementsAre;

CameraFacts v4l2(const std::string& path, const std::string& name, const std::string& usbId = "") {
    return {v4l2Provider, name, "usb-1 " + name, path, path, "", usbId};
}

CameraFacts pipeWire(const std::string& serial, const std::string& name,
                     const std::string& path = "") {
    return {pipeWireProvider, name, "node " + name, serial, path, "", ""};
}

CameraFacts libcamera(const std::string& id) {
    return {libcameraProvider, id, id, id, "", id, ""};
}

TEST(OfferedOnce, OneFileFromTwoProvidersIsOfferedByPipeWire) {
    EXPECT_THAT(offeredOnce({v4l2("/dev/video0", "Cam"), pipeWire("40", "Cam", "/dev/video0")}),
                ElementsAre(1));
}

TEST(OfferedOnce, CamerasOfOneNameAreAllOffered) {
    EXPECT_THAT(offeredOnce({v4l2("/dev/video0", "Cam"), v4l2("/dev/video2", "Cam"),
                             pipeWire("40", "Cam"), pipeWire("41", "Cam")}),
                ElementsAre(2, 3, 0, 1));
}

TEST(OfferedOnce, UsbCameraOfLibcameraHidesItsFile) {
    EXPECT_THAT(offeredOnce({v4l2("/dev/video0", "Cam", "04f2:b604"),
                             libcamera("\\_SB_.PCI0.XHC_.HS01-1:1.0-04f2:b604")}),
                ElementsAre(1));
}

TEST(OfferedOnce, PipeWiresNodeOfTheFileHidesTheUsbCameraOfLibcamera) {
    EXPECT_THAT(offeredOnce({v4l2("/dev/video0", "Cam", "04f2:b604"),
                             libcamera("\\_SB_.PCI0.XHC_.HS01-1:1.0-04f2:b604"),
                             pipeWire("40", "Cam", "/dev/video0")}),
                ElementsAre(2));
}

TEST(OfferedOnce, UnequalNumbersOfOneMakeAreAllOffered) {
    EXPECT_THAT(offeredOnce({v4l2("/dev/video0", "Cam", "04f2:b604"),
                             v4l2("/dev/video2", "Cam", "04f2:b604"),
                             libcamera("\\_SB_.PCI0.XHC_.HS01-1:1.0-04f2:b604")}),
                ElementsAre(2, 0, 1));
}

TEST(UsbIdOfLibcamera, OnlyAUsbNameHasOne) {
    EXPECT_EQ(usbIdOfLibcamera("\\_SB_.PCI0.XHC_.HS01-1:1.0-04f2:b604"), "04f2:b604");
    EXPECT_EQ(usbIdOfLibcamera("/base/soc/i2c0mux/i2c@1/imx219@10"), "");
    EXPECT_EQ(usbIdOfLibcamera(""), "");
    EXPECT_EQ(usbIdOfLibcamera("04f2:b604"), "");
}

TEST(FindAgain, SamePlaceWithANewNumberIsTheSameCamera) {
    EXPECT_EQ(
        findAgain(pipeWire("40", "Cam"), {}, {pipeWire("41", "Other"), pipeWire("55", "Cam")}), 1U);
}

TEST(FindAgain, OtherCameraIsNeverTaken) {
    EXPECT_EQ(findAgain(pipeWire("40", "Cam"), {}, {pipeWire("41", "Other")}), npos);
}

TEST(FindAgain, ADoubleThatWasThereBesideItIsNeverTaken) {
    EXPECT_EQ(findAgain(pipeWire("40", "Cam"), {"41"}, {pipeWire("41", "Cam")}), npos);
}

TEST(FindAgain, TwoCandidatesAreNotGuessedAt) {
    EXPECT_EQ(findAgain(pipeWire("40", "Cam"), {}, {pipeWire("50", "Cam"), pipeWire("51", "Cam")}),
              npos);
}

TEST(FindAgain, TheVeryInstanceIsTakenBesideADouble) {
    EXPECT_EQ(findAgain(pipeWire("40", "Cam"), {}, {pipeWire("39", "Cam"), pipeWire("40", "Cam")}),
              1U);
}

} // namespace
} // namespace vistrane
