#include <chrono>
#include <thread>

#include "backends/pictures/PicturesAhead.h"
#include "backends/pictures/file_bytes.h"
#include "tests/backends/pictures/PicturesTest.h"
#include "tests/contract/DataContract.h"
#include "tests/contract/ImageContract.h"
#include "tests/contract/PixelBufferContract.h"

namespace vistrane::testing {
namespace {

class PictureBackend {
public:
    Pictures& pictures() { return pictures_; }
    CoreVideo& coreVideo() { return coreVideo_; }
    CoreGraphics& coreGraphics() { return coreGraphics_; }
    std::string emptyFolder() { return folder_.path(); }

    void addFile(const std::string& path) { std::ofstream(path) << "other bytes"; }
    std::optional<std::string> contents(const std::string& path) {
        const Bytes bytes = get(path);
        return std::filesystem::exists(path)
                   ? std::optional(std::string(bytes.begin(), bytes.end()))
                   : std::nullopt;
    }

    std::string addPicture(NSSize points) { return add(placeMarks(points)); }
    std::string addDensePicture(NSSize points) {
        constexpr std::uint32_t dotsPerMetre = 5669;
        return add(withDensity(placeMarks({2 * points.width, 2 * points.height}), dotsPerMetre,
                               dotsPerMetre));
    }
    std::string addDamagedPicture() { return add({'d', 'a', 'm', 'a', 'g', 'e', 'd'}); }

    std::shared_ptr<NSData> data(const std::string& bytes) {
        return DataBytes::copyOf(Bytes(bytes.begin(), bytes.end()));
    }

    void putPicture(const std::string& path, NSSize points) { put(path, placeMarks(points)); }
    void damageFile(const std::string& path) { addFile(path); }
    void removeFile(const std::string& path) { std::filesystem::remove(path); }
    void settle() {
        const std::string last = folder_ / "last";
        put(last, {});
        while (!std::get<OpenFile>(OpenFile::at(last, 1000)).state().isSettled()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    void awaitExpected() { pictures_.ahead().waitUntilIdle(); }

private:
    static Bytes placeMarks(NSSize pixels) {
        return pngOf(static_cast<std::uint32_t>(pixels.width),
                     static_cast<std::uint32_t>(pixels.height), placeMark)
            .file;
    }
    static std::uint32_t placeMark(std::uint32_t x, std::uint32_t y) {
        return x << 24 | y << 16 | 90U << 8 | 255U;
    }

    std::string add(const Bytes& bytes) {
        const std::string path = folder_ / "picture.png";
        put(path, bytes);
        return path;
    }

    WorkFolder folder_;
    RecordingObserver observer_;
    Pictures pictures_{observer_};
    MediaCoreVideo coreVideo_;
    MediaCoreGraphics coreGraphics_{coreVideo_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Media, DataContract, PictureBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Media, ImageContract, PictureBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Media, PixelBufferContract, PictureBackend, contract::Names);

} // namespace
} // namespace vistrane::testing
