#include "backends/sim/SimPictures.h"

#include <optional>

#include "backends/sim/SimFiles.h"

namespace vistrane {

namespace {

constexpr std::size_t rowAlignment = 64;
constexpr std::size_t largestSide = 16384;

} // namespace

CVReturn SimDrawing::CVPixelBufferCreate(std::size_t width, std::size_t height,
                                         std::uint32_t pixelFormat, const NSDictionary& attributes,
                                         CVPixelBufferRef* buffer) {
    const std::lock_guard lock(mutex_);
    const CVReturn result = width == 0 || height == 0 || width > largestSide || height > largestSide
                                ? kCVReturnInvalidSize
                                : kCVReturnSuccess;
    std::string outcome = text(result);
    if (result == kCVReturnSuccess) {
        auto* const made = make(buffers_, "buffer");
        outcome = made->name;
        made->width = width;
        made->height = height;
        *buffer = made;
    }
    log_.record("CVPixelBufferCreate: %x% format: % attributes: % -> %", width, height, pixelFormat,
                attributes, outcome);
    return result;
}

CVReturn SimDrawing::addLocks(int locks, CVPixelBufferRef buffer, std::uint64_t flags,
                              const std::string& call) {
    const std::lock_guard lock(mutex_);
    log_.record(call + "% flags: %", nameIn(buffers_, buffer), flags);
    if (SimPixelBuffer* found = live(buffer, call)) {
        found->locks += locks;
        if (found->locks < 0) {
            log_.misuse(call + found->name + " is not locked");
        }
    }
    return kCVReturnSuccess;
}

void* SimDrawing::CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    SimPixelBuffer* found = live(buffer, "CVPixelBufferGetBaseAddress: ");
    return found && found->locks > 0 ? static_cast<CVPixelBuffer*>(found) : nullptr;
}

std::size_t SimDrawing::CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    const SimPixelBuffer* found = live(buffer, "CVPixelBufferGetBytesPerRow: ");
    // More than the pixels of a row need.
    return found ? (found->width * 4 / rowAlignment + 1) * rowAlignment : 0;
}

void SimDrawing::CVBufferRelease(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    const auto found = buffers_.find(buffer);
    if (found != buffers_.end() && found->second->locks > 0) {
        log_.misuse("CVBufferRelease: " + found->second->name + " is locked");
    }
    release(buffers_, buffer, "CVBufferRelease: ");
}

CGColorSpaceRef SimDrawing::CGColorSpaceCreateWithName(CGColorSpaceName) {
    const std::lock_guard lock(mutex_);
    auto* const made = make(spaces_, "colorSpace");
    log_.record("CGColorSpaceCreateWithName: kCGColorSpaceGenericRGB -> %", made->name);
    return made;
}

CGContextRef SimDrawing::CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                               std::size_t bitsPerComponent,
                                               std::size_t bytesPerRow, CGColorSpaceRef space,
                                               std::uint32_t bitmapInfo) {
    const std::lock_guard lock(mutex_);
    const bool succeeds = data && !std::exchange(failsNextContext, false);
    CGContextRef made = succeeds ? make(contexts_, "context") : nullptr;
    log_.record("CGBitmapContextCreate: % %x% bitsPerComponent: % bytesPerRow: % space: % "
                "bitmapInfo: % -> %",
                nameIn(buffers_, static_cast<CVPixelBuffer*>(data)), width, height,
                bitsPerComponent, bytesPerRow, nameIn(spaces_, space), bitmapInfo,
                nameIn(contexts_, made));
    return made;
}

std::shared_ptr<NSGraphicsContext> SimDrawing::graphicsContextWithCGContext(CGContextRef context,
                                                                            bool flipped) {
    const std::lock_guard lock(mutex_);
    log_.record("graphicsContextWithCGContext: % flipped: %", nameIn(contexts_, context), flipped);
    return std::make_shared<SimOf<NSGraphicsContext>>(log_, nameIn(contexts_, context));
}

std::optional<SimPixels> SimDrawing::pixels(CVPixelBufferRef buffer) const {
    const std::lock_guard lock(mutex_);
    const auto found = buffers_.find(buffer);
    return found == buffers_.end() ? std::nullopt : std::optional<SimPixels>(*found->second);
}

SimPixelBuffer* SimDrawing::live(CVPixelBufferRef buffer, const std::string& call) const {
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end() && buffer != nullptr) {
        log_.misuse(call + "was released before");
    }
    return found == buffers_.end() ? nullptr : found->second.get();
}

/// A picture in one of its forms.
template <class Base>
struct SimPictureOf : SimOf<Base> {
    SimPictureOf(SimPictures& pictures, const std::string& name, NSSize points)
        : SimOf<Base>(pictures.log_, name), source(pictures), files(pictures.files_),
          points_(points) {}

    SimPictures& source;
    SimFiles& files;
    NSSize points_;
};

namespace {

struct SimData final : SimPictureOf<NSData> {
    using SimPictureOf::SimPictureOf;
    const std::uint8_t* bytes() const override {
        return reinterpret_cast<const std::uint8_t*>(name().data());
    }
    std::size_t length() const override { return name().size(); }
    bool writeToFile(const std::string& path, bool atomically) const override {
        call("writeToFile: % atomically: %", path, atomically);
        return files.write(path, name());
    }
};

struct SimImage final : SimPictureOf<NSImage> {
    using SimPictureOf::SimPictureOf;
    NSSize size() const override { return points_; }
    std::shared_ptr<NSData> TIFFRepresentation() const override {
        call("TIFFRepresentation");
        return source.data("TIFF(" + name() + ")", points_);
    }
    void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                     double fraction) const override {
        call("drawAtPoint: % fromRect: % operation: % fraction: %", point, fromRect, +operation,
             fraction);
    }
    void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                    double fraction) const override {
        call("drawInRect: % fromRect: % operation: % fraction: %", rect, fromRect, +operation,
             fraction);
    }
};

struct SimBitmapImageRep final : SimPictureOf<NSBitmapImageRep> {
    using SimPictureOf::SimPictureOf;
    std::shared_ptr<NSData>
    representationUsingType(NSBitmapImageFileType type,
                            const NSBitmapImageProperties& properties) const override {
        call("representationUsingType: % NSImageCompressionFactor: %", +type,
             static_cast<double>(properties.NSImageCompressionFactor));
        return source.data("PNG(" + name() + ")", points_);
    }
};

/// The size of the picture in those bytes; nothing when they are not a picture.
std::optional<NSSize> sizeOf(const std::shared_ptr<NSData>& data) {
    const auto* bytes = dynamic_cast<const SimData*>(data.get());
    const bool isPicture = bytes && bytes->length() > 0 && !bytes->name().starts_with("damaged");
    return isPicture ? std::optional(bytes->points_) : std::nullopt;
}

} // namespace

std::shared_ptr<NSImage> SimPictures::imageWithContentsOfFile(const std::string& path) {
    log_.record("imageWithContentsOfFile: %", path);
    const std::optional<NSSize> size = files_.find(path).value_or(SimFiles::Entry{}).pictureSize;
    return size ? picture(path, *size) : nullptr;
}

std::shared_ptr<NSImage> SimPictures::imageWithData(std::shared_ptr<NSData> data) {
    log_.record("imageWithData: %", data);
    const std::optional<NSSize> size = sizeOf(data);
    return size ? picture(nameOf(data.get()), *size) : nullptr;
}

std::shared_ptr<NSBitmapImageRep> SimPictures::imageRepWithData(std::shared_ptr<NSData> data) {
    log_.record("imageRepWithData: %", data);
    const std::optional<NSSize> size = sizeOf(data);
    return size ? std::make_shared<SimBitmapImageRep>(*this, nameOf(data.get()), *size) : nullptr;
}

std::shared_ptr<NSData> SimPictures::data(const std::string& contents, NSSize size) {
    return std::make_shared<SimData>(*this, contents, size);
}

std::shared_ptr<NSImage> SimPictures::picture(const std::string& name, NSSize size) {
    return std::make_shared<SimImage>(*this, name, size);
}

} // namespace vistrane
