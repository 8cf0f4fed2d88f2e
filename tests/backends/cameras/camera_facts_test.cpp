#include "backends/cameras/camera_facts.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

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

TEST(OfferedOnce, CamerasThatAreKnownToBeTheSameAreOfferedByTheFirstProvider) {
    constexpr char usb[] = "04f2:b604";
    const CameraFacts file = v4l2("/dev/video0", "Cam");
    const CameraFacts usbFile = v4l2("/dev/video0", "Cam", usb);
    const CameraFacts usbFile2 = v4l2("/dev/video2", "Cam", usb);
    const CameraFacts usbCamera = libcamera("\\_SB_.PCI0.XHC_.HS01-1:1.0-04f2:b604");
    const CameraFacts fileNode = pipeWire("40", "Cam", "/dev/video0");
    const struct {
        const char* name;
        std::vector<CameraFacts> cameras;
        std::vector<std::size_t> offered;
    } cases[] = {
        {"one file of two providers", {file, fileNode}, {1}},
        {"only the name is the same",
         {file, v4l2("/dev/video2", "Cam"), pipeWire("40", "Cam"), pipeWire("41", "Cam")},
         {2, 3, 0, 1}},
        {"a USB camera of libcamera and its file", {usbFile, usbCamera}, {1}},
        {"PipeWire's node of that file as well", {usbFile, usbCamera, fileNode}, {2}},
        {"two cameras of one make, one of them in libcamera",
         {usbFile, usbFile2, usbCamera},
         {2, 0, 1}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(offeredOnce(each.cameras), each.offered) << each.name;
    }
}

TEST(UsbIdOfLibcamera, OnlyAUsbNameHasOne) {
    EXPECT_EQ(usbIdOfLibcamera("\\_SB_.PCI0.XHC_.HS01-1:1.0-04f2:b604"), "04f2:b604");
    EXPECT_EQ(usbIdOfLibcamera("/base/soc/i2c0mux/i2c@1/imx219@10"), "");
    EXPECT_EQ(usbIdOfLibcamera(""), "");
    EXPECT_EQ(usbIdOfLibcamera("04f2:b604"), "");
}

TEST(FindAgain, OnlyTheLostCameraIsTaken) {
    const struct {
        const char* name;
        std::vector<std::string> others;
        std::vector<CameraFacts> cameras;
        std::size_t found;
    } cases[] = {
        {"the same place with a new number",
         {},
         {pipeWire("41", "Other"), pipeWire("55", "Cam")},
         1},
        {"another camera", {}, {pipeWire("41", "Other")}, npos},
        {"its double, which was there beside it", {"41"}, {pipeWire("41", "Cam")}, npos},
        {"two candidates", {}, {pipeWire("50", "Cam"), pipeWire("51", "Cam")}, npos},
        {"the very instance beside a double",
         {},
         {pipeWire("39", "Cam"), pipeWire("40", "Cam")},
         1},
        {"the very instance behind two doubles",
         {},
         {pipeWire("38", "Cam"), pipeWire("39", "Cam"), pipeWire("40", "Cam")},
         2},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(findAgain(pipeWire("40", "Cam"), each.others, each.cameras), each.found)
            << each.name;
    }
}

TEST(CameraFacts, ACameraThatReturnsUnderANumberOfAnotherOneIsFound) {
    const std::vector<CameraFacts> before = {pipeWire("40", "Cam"), pipeWire("41", "Cam"),
                                             pipeWire("42", "Other")};
    const std::vector<std::string> twins = twinsOf(0, before);
    EXPECT_THAT(twins, testing::ElementsAre("41"));
    // PipeWire was restarted, and counts from the beginning.
    const std::vector<CameraFacts> after = {pipeWire("41", "Cam"), pipeWire("42", "Cam")};
    EXPECT_EQ(findAgain(before[0], twins, after), 1U);
}

} // namespace
} // namespace vistrane
