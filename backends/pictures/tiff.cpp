#include "backends/pictures/tiff.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "backends/pictures/picture_errors.h"
#include "backends/pictures/rgb_rows.h"

namespace vistrane {

namespace {

/// The file's first bytes: a head of 8 bytes, the directory, the values that do not fit into its
/// entries, padding. The strip follows.
///
/// head 8 | count 2 | 14 entries of 12 | next directory 4 | bits 8 | resolutions 16 | padding 2
constexpr std::size_t entryCount = 14;
constexpr std::size_t valuesOffset = 8 + 2 + entryCount * 12 + 4;
constexpr std::size_t stripOffset = valuesOffset + 8 + 16 + 2;
static_assert(stripOffset % 16 == 0);
using TiffHead = std::array<std::uint8_t, stripOffset>;

constexpr std::uint32_t centimetresPerMetre = 100;

enum Tag : std::uint16_t {
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    Compression = 259,
    PhotometricInterpretation = 262,
    StripOffsets = 273,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    XResolution = 282,
    YResolution = 283,
    PlanarConfiguration = 284,
    ResolutionUnit = 296,
    ExtraSamples = 338,
};

enum Type : std::uint16_t { Short = 3, Long = 4, Rational = 5 };

class HeadWriting {
public:
    explicit HeadWriting(TiffHead& head) : head_(head) {}

    void put16(std::uint32_t value) {
        head_[position_++] = static_cast<std::uint8_t>(value);
        head_[position_++] = static_cast<std::uint8_t>(value >> 8);
    }
    void put32(std::uint32_t value) {
        put16(value & 0xFFFF);
        put16(value >> 16);
    }
    /// A short value stands in the first two of an entry's four bytes.
    void putEntry(Tag tag, Type type, std::uint32_t count, std::uint32_t value) {
        put16(tag);
        put16(type);
        put32(count);
        put32(value);
    }

private:
    TiffHead& head_;
    std::size_t position_ = 0;
};

std::uint32_t samplesOf(const PictureShape& shape) {
    return shape.mayBeTransparent ? 4 : 3;
}

PixelForm formOf(const PictureShape& shape) {
    return shape.mayBeTransparent ? PixelForm::RGBA : PixelForm::RGB;
}

std::size_t stripLength(const PictureShape& shape) {
    return std::size_t{samplesOf(shape)} * shape.width * shape.height;
}

TiffHead headOf(const PictureShape& shape) {
    TiffHead head{};
    HeadWriting out(head);
    const std::uint32_t samples = samplesOf(shape);
    const PixelDensity density = shape.density.value_or(PixelDensity{1, 1});
    const std::uint32_t densityUnit = shape.density ? centimetresPerMetre : 1;
    out.put16(0x4949);
    out.put16(42);
    out.put32(8);
    out.put16(entryCount);
    out.putEntry(ImageWidth, Long, 1, shape.width);
    out.putEntry(ImageLength, Long, 1, shape.height);
    out.putEntry(BitsPerSample, Short, samples, valuesOffset);
    out.putEntry(Compression, Short, 1, 1);
    out.putEntry(PhotometricInterpretation, Short, 1, 2);
    out.putEntry(StripOffsets, Long, 1, stripOffset);
    out.putEntry(SamplesPerPixel, Short, 1, samples);
    out.putEntry(RowsPerStrip, Long, 1, shape.height);
    out.putEntry(StripByteCounts, Long, 1, static_cast<std::uint32_t>(stripLength(shape)));
    out.putEntry(XResolution, Rational, 1, valuesOffset + 8);
    out.putEntry(YResolution, Rational, 1, valuesOffset + 16);
    out.putEntry(PlanarConfiguration, Short, 1, 1);
    // 1: the resolution only gives the pixels' aspect. 3: per centimetre.
    out.putEntry(ResolutionUnit, Short, 1, shape.density ? 3 : 1);
    // 2: alpha, not multiplied into the colour. Without a fourth sample the directory is shorter.
    if (samples == 4) {
        out.putEntry(ExtraSamples, Short, 1, 2);
    } else {
        head[8] = entryCount - 1;
        out.put32(0);
        out.put32(0);
        out.put32(0);
    }
    out.put32(0);
    for (std::uint32_t i = 0; i < 4; ++i) {
        out.put16(i < samples ? 8 : 0);
    }
    out.put32(density.x);
    out.put32(densityUnit);
    out.put32(density.y);
    out.put32(densityUnit);
    return head;
}

std::uint32_t number(std::span<const std::uint8_t> file, std::size_t offset) {
    return static_cast<std::uint32_t>(file[offset]) |
           static_cast<std::uint32_t>(file[offset + 1]) << 8 |
           static_cast<std::uint32_t>(file[offset + 2]) << 16 |
           static_cast<std::uint32_t>(file[offset + 3]) << 24;
}

/// Where the value of the directory's n-th entry stands.
constexpr std::size_t entryValue(std::size_t n) {
    return 8 + 2 + n * 12 + 8;
}

/// The shape that a head of ours has with these values; whether it is one shows by comparison.
PictureShape claimedShape(std::span<const std::uint8_t> file) {
    PictureShape shape;
    shape.width = number(file, entryValue(0));
    shape.height = number(file, entryValue(1));
    shape.mayBeTransparent = file[entryValue(6)] == 4;
    if (file[entryValue(12)] == 3) {
        shape.density =
            PixelDensity{number(file, valuesOffset + 8), number(file, valuesOffset + 16)};
    }
    return shape;
}

class TiffPicture final : public PictureSource {
public:
    TiffPicture(PictureShape shape, std::string name, std::shared_ptr<const NSData> file)
        : PictureSource(shape, std::move(name)), file_(std::move(file)) {}

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override {
        convertRows(strip(), formOf(shape()), shape(), form, rows, stride);
        return std::nullopt;
    }

    const std::uint8_t* pixelsInMemory(PixelForm form) const override {
        return form == formOf(shape()) ? strip() : nullptr;
    }

private:
    const std::uint8_t* strip() const { return file_->bytes() + stripOffset; }

    std::shared_ptr<const NSData> file_;
};

} // namespace

std::variant<ByteArray, NSError> tiffFile(const PictureSource& picture) {
    const PictureShape& shape = picture.shape();
    const TiffHead head = headOf(shape);
    auto file = ByteArray::ofLength(stripOffset + stripLength(shape));
    if (!file) {
        return pictureError(PictureFault::NoMemory, picture.name(),
                            "needs more memory than there is; close other programs");
    }
    std::copy(head.begin(), head.end(), file->data());
    const auto stride = static_cast<std::ptrdiff_t>(samplesOf(shape)) * shape.width;
    if (auto error = picture.readPixels(formOf(shape), file->data() + stripOffset, stride)) {
        return *error;
    }
    return std::move(*file);
}

PictureSourceResult pictureFromTiff(std::shared_ptr<const NSData> file, std::string name,
                                    const PictureLimits& limits) {
    const std::span<const std::uint8_t> bytes(file->bytes(), file->length());
    const NSError refused = pictureError(PictureFault::NotAPicture, name,
                                         "is not a TIFF file of this program; make it again");
    if (bytes.size() < stripOffset) {
        return refused;
    }
    const PictureShape shape = claimedShape(bytes);
    if (!limits.allows(shape.width, shape.height) ||
        (shape.density && !densityMakesSense(*shape.density, shape.width, shape.height))) {
        return refused;
    }
    const TiffHead expected = headOf(shape);
    if (!std::equal(expected.begin(), expected.end(), bytes.begin()) ||
        bytes.size() != stripOffset + stripLength(shape)) {
        return refused;
    }
    return std::make_shared<TiffPicture>(shape, std::move(name), std::move(file));
}

} // namespace vistrane
