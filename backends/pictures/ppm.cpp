#include "backends/pictures/ppm.h"

#include <optional>
#include <span>
#include <utility>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/picture_errors.h"
#include "backends/pictures/rgb_rows.h"

namespace vistrane {

namespace {

constexpr std::uint32_t largestValue = 255;

class PpmPicture final : public PictureSource {
public:
    PpmPicture(PictureShape shape, std::string name, std::shared_ptr<const NSData> file,
               const std::uint8_t* pixels)
        : PictureSource(shape, std::move(name)), file_(std::move(file)), pixels_(pixels) {}

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override {
        convertRows(pixels_, PixelForm::RGB, shape(), form, rows, stride);
        return std::nullopt;
    }

    const std::uint8_t* pixelsInMemory(PixelForm form) const override {
        return form == PixelForm::RGB ? pixels_ : nullptr;
    }

private:
    std::shared_ptr<const NSData> file_;
    const std::uint8_t* pixels_;
};

bool isSpace(std::uint8_t byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// Reads the head's words, one after the other.
class HeadReading {
public:
    explicit HeadReading(std::span<const std::uint8_t> file) : file_(file) {}

    bool takeMagic() {
        const bool fits = file_.size() >= 2 && file_[0] == 'P' && file_[1] == '6';
        position_ = fits ? 2 : 0;
        return fits;
    }

    std::optional<std::uint32_t> takeNumber() {
        const std::size_t gap = position_;
        skipSpaceAndComments();
        const std::size_t start = position_;
        std::uint32_t value = 0;
        while (position_ < file_.size() && file_[position_] >= '0' && file_[position_] <= '9') {
            value = value * 10 + (file_[position_] - '0');
            // More digits than any picture's size has.
            if (++position_ - start > 9) {
                return std::nullopt;
            }
        }
        return start > gap && position_ > start ? std::optional(value) : std::nullopt;
    }

    /// One white space ends the head; the rest are pixels.
    std::optional<std::span<const std::uint8_t>> takePixels() {
        if (position_ >= file_.size() || !isSpace(file_[position_])) {
            return std::nullopt;
        }
        return file_.subspan(position_ + 1);
    }

private:
    void skipSpaceAndComments() {
        bool inComment = false;
        while (position_ < file_.size()) {
            const std::uint8_t byte = file_[position_];
            inComment = inComment ? byte != '\n' && byte != '\r' : byte == '#';
            if (!inComment && !isSpace(byte)) {
                return;
            }
            ++position_;
        }
    }

    std::span<const std::uint8_t> file_;
    std::size_t position_ = 0;
};

NSError notAPpm(const std::string& name) {
    return pictureError(PictureFault::NotAPicture, name, "is not a whole PPM file; make it again");
}

} // namespace

std::string ppmHead(std::uint32_t width, std::uint32_t height) {
    return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
}

PictureSourceResult pictureFromPpm(std::shared_ptr<const NSData> file, std::string name,
                                   const PictureLimits& limits) {
    HeadReading head({file->bytes(), file->length()});
    if (!head.takeMagic()) {
        return notAPpm(name);
    }
    const auto width = head.takeNumber();
    const auto height = head.takeNumber();
    const auto largest = head.takeNumber();
    const auto pixels = head.takePixels();
    if (!width || !height || largest != largestValue || !pixels) {
        return notAPpm(name);
    }
    if (!limits.allows(*width, *height)) {
        return pictureError(PictureFault::TooLarge, name, "is empty or too large");
    }
    if (pixels->size() != std::size_t{3} * *width * *height) {
        return notAPpm(name);
    }
    return std::make_shared<PpmPicture>(PictureShape{*width, *height, std::nullopt, false},
                                        std::move(name), std::move(file), pixels->data());
}

} // namespace vistrane
