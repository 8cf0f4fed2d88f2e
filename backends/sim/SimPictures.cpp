#include "backends/sim/SimPictures.h"

#include <optional>

#include "backends/sim/SimFiles.h"

namespace vistrane {

namespace {

constexpr std::size_t rowAlignment = 64;
constexpr std::size_t largestSide = 16384;

class SimGraphicsContext final : public SimOf<NSGraphicsContext> {
public:
    SimGraphicsContext(CallLog& log, const SimBitmapContext& wrapped, bool upsideDown)
        : SimOf(log, wrapped.name), context(wrapped), flipped(upsideDown) {}

    const SimBitmapContext& context;
    const bool flipped;
};

} // namespace

CVReturn SimDrawing::CVPixelBufferCreate(std::size_t width, std::size_t height,
                                         std::uint32_t pixelFormat, const NSDictionary& attributes,
                                         CVPixelBufferRef* buffer) {
    const std::lock_guard lock(mutex_);
    const bool isLarge = width > largestSide || height > largestSide;
    const bool isValid = pixelFormat == kCVPixelFormatType_32ARGB && buffer != nullptr;
    const CVReturn result = width == 0 || height == 0 ? kCVReturnInvalidSize
                            : isLarge                 ? kCVReturnAllocationFailed
                            : !isValid                ? kCVReturnInvalidArgument
                                                      : kCVReturnSuccess;
    std::string outcome = text(result);
    if (result == kCVReturnSuccess) {
        auto made = std::make_unique<SimPixelBuffer>();
        made->name = outcome = log_.nextName("buffer");
        made->width = width;
        made->height = height;
        made->bytesPerRow = (width * 4 / rowAlignment + 1) * rowAlignment;
        made->memory.resize(made->bytesPerRow * height);
        *buffer = made.get();
        buffers_[*buffer] = std::move(made);
    }
    log_.record("CVPixelBufferCreate: %x% format: % attributes: % -> %", width, height, pixelFormat,
                attributes, outcome);
    return result;
}

CVReturn SimDrawing::addLocks(int locks, CVPixelBufferRef buffer, std::uint64_t flags,
                              const std::string& call) {
    const std::lock_guard lock(mutex_);
    log_.record(call + "% flags: %", nameIn(buffers_, buffer), flags);
    SimPixelBuffer* found = live(buffer, call);
    if (found && found->locks + locks < 0) {
        log_.misuse(call + found->name + " is not locked");
        found = nullptr;
    }
    if (found) {
        found->locks += locks;
    }
    return found ? kCVReturnSuccess : kCVReturnInvalidArgument;
}

void* SimDrawing::CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    SimPixelBuffer* found = live(buffer, "CVPixelBufferGetBaseAddress: ");
    return found && found->locks > 0 ? found->memory.data() : nullptr;
}

std::size_t SimDrawing::CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    const SimPixelBuffer* found = live(buffer, "CVPixelBufferGetBytesPerRow: ");
    return found ? found->bytesPerRow : 0;
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
    auto space = std::make_unique<SimColorSpace>();
    space->name = log_.nextName("colorSpace");
    log_.record("CGColorSpaceCreateWithName: kCGColorSpaceGenericRGB -> %", space->name);
    CGColorSpaceRef made = space.get();
    spaces_[made] = std::move(space);
    return made;
}

CGContextRef SimDrawing::CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                               std::size_t bitsPerComponent,
                                               std::size_t bytesPerRow, CGColorSpaceRef space,
                                               std::uint32_t bitmapInfo) {
    const std::lock_guard lock(mutex_);
    const bool isDrawable = data && width > 0 && height > 0 && bitsPerComponent == 8 &&
                            bytesPerRow / 4 >= width && spaces_.contains(space) &&
                            bitmapInfo == kCGImageAlphaNoneSkipFirst &&
                            !std::exchange(failsNextContext, false);
    CGContextRef made = nullptr;
    if (isDrawable) {
        auto context = std::make_unique<SimBitmapContext>();
        context->name = log_.nextName("context");
        context->memory = static_cast<std::uint8_t*>(data);
        context->width = width;
        context->height = height;
        context->bytesPerRow = bytesPerRow;
        made = context.get();
        contexts_[made] = std::move(context);
    }
    const SimPixelBuffer* buffer = bufferAt(data);
    log_.record("CGBitmapContextCreate: % %x% bitsPerComponent: % bytesPerRow: % space: % "
                "bitmapInfo: % -> %",
                buffer ? buffer->name : std::string(data ? "memory" : "(null)"), width, height,
                bitsPerComponent, bytesPerRow, nameIn(spaces_, space), bitmapInfo,
                nameIn(contexts_, made));
    return made;
}

void SimDrawing::CFRelease(CGContextRef context) {
    const std::lock_guard lock(mutex_);
    for (const auto& [thread, contexts] : states_) {
        const auto* current = dynamic_cast<const SimGraphicsContext*>(contexts.back().get());
        if (current && &current->context == context) {
            log_.misuse("CFRelease: " + current->name() + " is still a current context");
            return;
        }
    }
    release(contexts_, context, "CFRelease: ");
}

std::shared_ptr<NSGraphicsContext> SimDrawing::graphicsContextWithCGContext(CGContextRef context,
                                                                            bool flipped) {
    const std::lock_guard lock(mutex_);
    log_.record("graphicsContextWithCGContext: % flipped: %", nameIn(contexts_, context), flipped);
    return std::make_shared<SimGraphicsContext>(log_, *contexts_.at(context), flipped);
}

void SimDrawing::saveGraphicsState() {
    const std::lock_guard lock(mutex_);
    log_.record("saveGraphicsState");
    state().push_back(state().back());
}

void SimDrawing::setCurrentContext(std::shared_ptr<NSGraphicsContext> context) {
    const std::lock_guard lock(mutex_);
    log_.record("setCurrentContext: %", context);
    state().back() = std::move(context);
}

void SimDrawing::restoreGraphicsState() {
    const std::lock_guard lock(mutex_);
    log_.record("restoreGraphicsState");
    if (state().size() == 1) {
        log_.misuse("restoreGraphicsState: nothing was saved");
        return;
    }
    state().pop_back();
}

void SimDrawing::draw(NSPoint point, NSSize size) {
    const std::lock_guard lock(mutex_);
    requireCurrentContext("drawAtPoint");
    const auto* target = dynamic_cast<const SimGraphicsContext*>(state().back().get());
    if (!target) {
        return;
    }
    const SimBitmapContext& context = target->context;
    const SimPixelBuffer* buffer = bufferAt(context.memory);
    if (buffer && buffer->locks == 0) {
        log_.misuse("drawAtPoint: " + buffer->name + " is not locked");
        return;
    }
    // The context's origin is its bottom left corner; its rows begin at the top.
    const auto height = static_cast<std::ptrdiff_t>(size.height);
    const auto top =
        static_cast<std::ptrdiff_t>(context.height) - static_cast<std::ptrdiff_t>(point.y) - height;
    for (std::ptrdiff_t y = 0; y < height; ++y) {
        for (std::ptrdiff_t x = 0; x < static_cast<std::ptrdiff_t>(size.width); ++x) {
            // A negative place is a very large number here.
            const auto row = static_cast<std::size_t>(top + y);
            const auto column = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(point.x) + x);
            if (row < context.height && column < context.width) {
                std::uint8_t* pixel = context.memory + row * context.bytesPerRow + column * 4;
                pixel[0] = 255;
                pixel[1] = static_cast<std::uint8_t>(x);
                pixel[2] = static_cast<std::uint8_t>(target->flipped ? height - 1 - y : y);
                pixel[3] = 90;
            }
        }
    }
}

void SimDrawing::requireCurrentContext(const std::string& call) {
    const std::lock_guard lock(mutex_);
    if (!state().back()) {
        log_.misuse(call + ": the thread has no current context");
    }
}

std::optional<SimPixels> SimDrawing::pixels(CVPixelBufferRef buffer) const {
    const std::lock_guard lock(mutex_);
    const auto found = buffers_.find(buffer);
    return found == buffers_.end() ? std::nullopt : std::optional<SimPixels>(*found->second);
}

std::size_t SimDrawing::leftovers() const {
    const std::lock_guard lock(mutex_);
    std::size_t count = spaces_.size() + contexts_.size();
    for (const auto& [thread, contexts] : states_) {
        count += contexts.size() - 1;
    }
    return count;
}

SimPixelBuffer* SimDrawing::live(CVPixelBufferRef buffer, const std::string& call) const {
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end() && buffer != nullptr) {
        log_.misuse(call + "was released before");
    }
    return found == buffers_.end() ? nullptr : found->second.get();
}

const SimPixelBuffer* SimDrawing::bufferAt(const void* memory) const {
    for (const auto& [reference, buffer] : buffers_) {
        if (buffer->memory.data() == memory) {
            return buffer.get();
        }
    }
    return nullptr;
}

/// A picture in one of its forms.
template <class Base>
struct SimPictureOf : SimOf<Base> {
    SimPictureOf(SimPictures& pictures, const std::string& name, NSSize points)
        : SimOf<Base>(pictures.log_, name), source(pictures), files(pictures.files_),
          drawing(pictures.drawing_), points_(points) {}

    SimPictures& source;
    SimFiles& files;
    SimDrawing& drawing;
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
        drawing.draw(point, points_);
    }
    /// Draws no pixel.
    void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                    double fraction) const override {
        call("drawInRect: % fromRect: % operation: % fraction: %", rect, fromRect, +operation,
             fraction);
        drawing.requireCurrentContext("drawInRect");
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
