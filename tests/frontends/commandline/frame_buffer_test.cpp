#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include "backends/console/ConsoleDispatch.h"
#include "backends/console/ConsoleFoundation.h"
#include "backends/console/ConsoleWorkspace.h"
#include "backends/console/MemoryUserDefaults.h"
#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "core/app/AppDelegate.h"
#include "frontends/MediaAVFoundation.h"
#include "frontends/commandline/SessionAppKit.h"

namespace vistrane {
namespace {

using testing::ElementsAre;

class SilentObserver final : public MediaObserver {};

/// The controller's pixel buffers on the real kits.
class FrameBuffer : public testing::Test {
protected:
    void SetUp() override {
        std::string name = std::filesystem::temp_directory_path() / "vistrane-XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override {
        ::close(nowhere_);
        std::filesystem::remove_all(folder_);
    }

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

    /// The colours of one pixel of the top row. What is in the fourth byte, the first, is nobody's
    /// business.
    std::array<int, 3> colour(CVPixelBufferRef buffer, std::size_t x) {
        coreVideo_.CVPixelBufferLockBaseAddress(buffer, 0);
        const auto* const row =
            static_cast<const std::uint8_t*>(coreVideo_.CVPixelBufferGetBaseAddress(buffer));
        const std::array<int, 3> found = {row[4 * x + 1], row[4 * x + 2], row[4 * x + 3]};
        coreVideo_.CVPixelBufferUnlockBaseAddress(buffer, 0);
        return found;
    }

    std::filesystem::path folder_;
    const int nowhere_ = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ConsoleOutput output_{nowhere_};
    ConsoleRunLoop loop_;
    MemoryUserDefaults defaults_;
    ConsoleFoundation foundation_{loop_, defaults_, output_, "1.0.0"};
    ConsoleDispatch dispatch_{loop_};
    CompileReport report_;
    SilentObserver observer_;
    Pictures pictures_{observer_};
    MediaCoreVideo coreVideo_;
    MediaCoreGraphics coreGraphics_{coreVideo_};
    Cameras cameras_{dispatch_, observer_};
    Movies movies_{observer_};
    MediaAVFoundation avFoundation_{cameras_, movies_};
    ConsoleWorkspace workspace_{[](const NSURL&) { return true; }};
    SessionAppKit appKit_{
        std::make_shared<const ConsoleAlertRules>(ConsoleAlertRules{loop_, {}, {}}), workspace_,
        loop_, pictures_, report_};
    AppDelegate controller_{
        Platform{foundation_, appKit_, avFoundation_, coreVideo_, coreGraphics_, dispatch_}};
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
