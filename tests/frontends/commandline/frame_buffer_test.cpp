#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include "backends/console/ConsoleWorkspace.h"
#include "backends/console/MemoryUserDefaults.h"
#include "core/app/AppDelegate.h"
#include "frontends/SessionBackend.h"
#include "frontends/commandline/SessionAppKit.h"
#include "tests/backends/posix/TemporaryFolder.h"

namespace vistrane {
namespace {

using testing::ElementsAre;

/// The controller's pixel buffers on the real kits.
class FrameBuffer : public testing::Test {
protected:
    /// A picture file of one row, of these pixels: red, green, blue and alpha.
    std::shared_ptr<NSImage> picture(const std::vector<std::array<std::uint8_t, 4>>& pixels) {
        const std::string path = folder_ / "row.png";
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = static_cast<png_uint_32>(pixels.size());
        image.height = 1;
        image.format = PNG_FORMAT_RGBA;
        EXPECT_NE(png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr), 0);
        return appKit_.imageWithContentsOfFile(path);
    }

    /// Red, green and blue of a pixel in the top row. The first byte of a pixel is unused.
    std::array<int, 3> colour(CVPixelBufferRef buffer, std::size_t x) {
        coreVideo_.CVPixelBufferLockBaseAddress(buffer, 0);
        const auto* const row =
            static_cast<const std::uint8_t*>(coreVideo_.CVPixelBufferGetBaseAddress(buffer));
        const std::array<int, 3> found = {row[4 * x + 1], row[4 * x + 2], row[4 * x + 3]};
        coreVideo_.CVPixelBufferUnlockBaseAddress(buffer, 0);
        return found;
    }

    TemporaryFolder folder_;
    QtRunLoop loop_;
    MemoryUserDefaults defaults_;
    SessionObserver observer_{[](const std::string&) {}};
    SessionBackend backend_{
        loop_, defaults_, [](const std::string&) {}, observer_, {.version = "1.0.0"}};
    MediaCoreVideo& coreVideo_ = backend_.coreVideo;
    CompileReport report_;
    ConsoleWorkspace workspace_{[](const NSURL&) { return true; }};
    SessionAppKit appKit_{
        std::make_shared<const ConsoleAlertRules>(ConsoleAlertRules{loop_, {}, {}}), workspace_,
        loop_, backend_.pictures, report_};
    AppDelegate controller_{backend_.platform(appKit_)};
};

TEST_F(FrameBuffer, AHalfTransparentPictureIsComposedOverBlackWithoutItsAlpha) {
    const auto image = picture(
        {{200, 100, 50, 255}, {200, 100, 50, 128}, {255, 255, 255, 128}, {200, 100, 50, 0}});
    ASSERT_TRUE(image);
    const CVPixelBufferRef buffer = controller_.fastImageFromNSImage(image);
    ASSERT_NE(buffer, nullptr);
    EXPECT_THAT(colour(buffer, 0), ElementsAre(200, 100, 50));
    EXPECT_THAT(colour(buffer, 1), ElementsAre(100, 50, 25));
    EXPECT_THAT(colour(buffer, 2), ElementsAre(128, 128, 128));
    EXPECT_THAT(colour(buffer, 3), ElementsAre(0, 0, 0));
    coreVideo_.CVBufferRelease(buffer);
}

TEST_F(FrameBuffer, WithoutAPictureThereIsNoBuffer) {
    EXPECT_EQ(controller_.fastImageFromNSImage(nullptr), nullptr);
}

} // namespace
} // namespace vistrane
