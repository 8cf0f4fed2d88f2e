#include "backends/sim/SimDrawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "backends/sim/SimRole.h"

namespace vistrane {

namespace {

constexpr std::size_t rowAlignment = 64;
constexpr std::size_t largestSide = 16384;

std::string describeSize(std::size_t width, std::size_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

} // namespace

class SimPixelBuffer final : public CVPixelBuffer {
public:
    SimPixelBuffer(std::string name, std::size_t width, std::size_t height) {
        const std::size_t bytesPerRow = (width * 4 / rowAlignment + 1) * rowAlignment;
        pixels = {std::move(name), width, height,
                  bytesPerRow,     false, std::vector<std::uint8_t>(bytesPerRow * height)};
    }
    const std::string& name() const { return pixels.name; }
    bool isLocked() const { return locks > 0; }

    SimPixels pixels;
    int locks = 0;
};

class SimColorSpace final : public CGColorSpace {
public:
    explicit SimColorSpace(std::string given) : name(std::move(given)) {}
    std::string name;
};

class SimBitmapContext final : public CGContext {
public:
    std::string name;
    std::uint8_t* memory = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bytesPerRow = 0;
};

namespace {

class SimGraphicsContext final : public NSGraphicsContext, public SimObject {
public:
    SimGraphicsContext(CallLog& log, const std::string& name, const SimBitmapContext& wrapped,
                       bool upsideDown)
        : SimObject(log, name), context(wrapped), flipped(upsideDown) {}

    const SimBitmapContext& context;
    const bool flipped;
};

} // namespace

std::vector<int> SimPixels::pixel(std::size_t x, std::size_t y) const {
    const std::size_t at = y * bytesPerRow + x * 4;
    return {memory[at], memory[at + 1], memory[at + 2], memory[at + 3]};
}

SimDrawing::SimDrawing(CallLog& log) : log_(log) {}

SimDrawing::~SimDrawing() = default;

CVReturn SimDrawing::CVPixelBufferCreate(std::size_t width, std::size_t height,
                                         std::uint32_t pixelFormat, const NSDictionary& attributes,
                                         CVPixelBufferRef* buffer) {
    const std::lock_guard lock(mutex_);
    const std::string call = "CVPixelBufferCreate: " + describeSize(width, height) +
                             " format: " + std::to_string(pixelFormat) +
                             " attributes: " + describe(attributes) + " -> ";
    CVReturn result = kCVReturnSuccess;
    if (width == 0 || height == 0) {
        result = kCVReturnInvalidSize;
    } else if (failingBuffers_ > 0 || width > largestSide || height > largestSide) {
        failingBuffers_ = std::max(failingBuffers_ - 1, 0);
        result = kCVReturnAllocationFailed;
    } else if (pixelFormat != kCVPixelFormatType_32ARGB || buffer == nullptr) {
        result = kCVReturnInvalidArgument;
    }
    if (result != kCVReturnSuccess) {
        log_.record(call + std::to_string(result));
        return result;
    }
    auto made = std::make_unique<SimPixelBuffer>(log_.nextName("buffer"), width, height);
    log_.record(call + made->name());
    *buffer = made.get();
    buffers_[made.get()] = std::move(made);
    return result;
}

CVReturn SimDrawing::CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) {
    const std::lock_guard lock(mutex_);
    const std::string call = "CVPixelBufferLockBaseAddress: " + nameOfBuffer(buffer) +
                             " flags: " + std::to_string(flags);
    log_.record(call);
    SimPixelBuffer* found = live(buffer, call);
    if (!found) {
        return kCVReturnInvalidArgument;
    }
    ++found->locks;
    return kCVReturnSuccess;
}

CVReturn SimDrawing::CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) {
    const std::lock_guard lock(mutex_);
    const std::string call = "CVPixelBufferUnlockBaseAddress: " + nameOfBuffer(buffer) +
                             " flags: " + std::to_string(flags);
    log_.record(call);
    SimPixelBuffer* found = live(buffer, call);
    if (!found || !found->isLocked()) {
        if (found) {
            log_.misuse(call + ": is not locked");
        }
        return kCVReturnInvalidArgument;
    }
    --found->locks;
    return kCVReturnSuccess;
}

void* SimDrawing::CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    const std::string call = "CVPixelBufferGetBaseAddress: " + nameOfBuffer(buffer);
    log_.recordGetter(call);
    SimPixelBuffer* found = live(buffer, call);
    return found && found->isLocked() ? found->pixels.memory.data() : nullptr;
}

std::size_t SimDrawing::CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    const std::string call = "CVPixelBufferGetBytesPerRow: " + nameOfBuffer(buffer);
    log_.recordGetter(call);
    const SimPixelBuffer* found = live(buffer, call);
    return found ? found->pixels.bytesPerRow : 0;
}

void SimDrawing::CVBufferRelease(CVPixelBufferRef buffer) {
    const std::lock_guard lock(mutex_);
    const std::string call = "CVBufferRelease: " + nameOfBuffer(buffer);
    log_.record(call);
    if (const SimPixelBuffer* found = live(buffer, call)) {
        if (found->isLocked()) {
            log_.misuse(call + ": is locked");
        }
        buffers_.erase(buffer);
    }
}

void SimDrawing::CVPixelBufferPoolRelease(CVPixelBufferPoolRef pool) {
    log_.record("CVPixelBufferPoolRelease: " +
                (pool ? static_cast<SimPixelBufferPool*>(pool)->name() : "(null)"));
}

CGColorSpaceRef SimDrawing::CGColorSpaceCreateWithName(CGColorSpaceName name) {
    const std::lock_guard lock(mutex_);
    auto space = std::make_unique<SimColorSpace>(log_.nextName("colorSpace"));
    log_.record(std::string("CGColorSpaceCreateWithName: ") +
                (name == kCGColorSpaceGenericRGB ? "kCGColorSpaceGenericRGB" : "other") + " -> " +
                space->name);
    CGColorSpaceRef made = space.get();
    spaces_[made] = std::move(space);
    return made;
}

void SimDrawing::CGColorSpaceRelease(CGColorSpaceRef space) {
    const std::lock_guard lock(mutex_);
    const auto found = spaces_.find(space);
    log_.record("CGColorSpaceRelease: " +
                (found == spaces_.end() ? "(null)" : found->second->name));
    if (found != spaces_.end()) {
        spaces_.erase(found);
    } else if (space != nullptr) {
        log_.misuse("CGColorSpaceRelease: no live colour space");
    }
}

CGContextRef SimDrawing::CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                               std::size_t bitsPerComponent,
                                               std::size_t bytesPerRow, CGColorSpaceRef space,
                                               std::uint32_t bitmapInfo) {
    const std::lock_guard lock(mutex_);
    const SimPixelBuffer* buffer = bufferAt(data);
    const auto colors = spaces_.find(space);
    const std::string target = data == nullptr ? "(null)" : buffer ? buffer->name() : "memory";
    const std::string call =
        "CGBitmapContextCreate: " + target + " " + describeSize(width, height) +
        " bitsPerComponent: " + std::to_string(bitsPerComponent) +
        " bytesPerRow: " + std::to_string(bytesPerRow) +
        " space: " + (colors == spaces_.end() ? "(null)" : colors->second->name) +
        " bitmapInfo: " + std::to_string(bitmapInfo) + " -> ";
    const bool drawable = data && width > 0 && height > 0 && bitsPerComponent == 8 &&
                          bytesPerRow / 4 >= width && colors != spaces_.end() &&
                          bitmapInfo == kCGImageAlphaNoneSkipFirst;
    if (!drawable || failingContexts_ > 0) {
        failingContexts_ = std::max(failingContexts_ - 1, 0);
        log_.record(call + "(null)");
        return nullptr;
    }
    auto context = std::make_unique<SimBitmapContext>();
    context->name = log_.nextName("context");
    context->memory = static_cast<std::uint8_t*>(data);
    context->width = width;
    context->height = height;
    context->bytesPerRow = bytesPerRow;
    log_.record(call + context->name);
    CGContextRef made = context.get();
    contexts_[made] = std::move(context);
    return made;
}

void SimDrawing::CFRelease(CGContextRef context) {
    const std::lock_guard lock(mutex_);
    const auto found = contexts_.find(context);
    log_.record("CFRelease: " + (found == contexts_.end() ? "(null)" : found->second->name));
    if (found == contexts_.end()) {
        if (context != nullptr) {
            log_.misuse("CFRelease: no live context");
        }
        return;
    }
    if (isCurrentAnywhere(context)) {
        log_.misuse("CFRelease: " + found->second->name + " is still a current context");
        return;
    }
    contexts_.erase(found);
}

std::shared_ptr<NSGraphicsContext> SimDrawing::wrap(CGContextRef context, bool flipped) {
    const std::lock_guard lock(mutex_);
    const auto found = contexts_.find(context);
    const std::string name = found == contexts_.end() ? "(null)" : found->second->name;
    log_.record("graphicsContextWithCGContext: " + name + " flipped: " + yesNo(flipped));
    if (found == contexts_.end()) {
        log_.misuse("graphicsContextWithCGContext: no live context");
        return nullptr;
    }
    return std::make_shared<SimGraphicsContext>(log_, name, *found->second, flipped);
}

void SimDrawing::saveGraphicsState() {
    const std::lock_guard lock(mutex_);
    log_.record("saveGraphicsState");
    GraphicsState& state = states_[SimRole::key()];
    state.saved.push_back(state.current);
}

void SimDrawing::setCurrentContext(std::shared_ptr<NSGraphicsContext> context) {
    const std::lock_guard lock(mutex_);
    log_.record("setCurrentContext: " + nameOf(context.get()));
    states_[SimRole::key()].current = std::move(context);
}

void SimDrawing::restoreGraphicsState() {
    const std::lock_guard lock(mutex_);
    log_.record("restoreGraphicsState");
    GraphicsState& state = states_[SimRole::key()];
    if (state.saved.empty()) {
        log_.misuse("restoreGraphicsState: nothing was saved");
        return;
    }
    state.current = std::move(state.saved.back());
    state.saved.pop_back();
}

void SimDrawing::draw(NSPoint point, NSSize size) {
    const std::lock_guard lock(mutex_);
    const auto* target =
        dynamic_cast<const SimGraphicsContext*>(states_[SimRole::key()].current.get());
    if (!target) {
        log_.misuse("drawAtPoint: the thread has no current context");
        return;
    }
    const SimBitmapContext& context = target->context;
    const SimPixelBuffer* buffer = bufferAt(context.memory);
    if (buffer && !buffer->isLocked()) {
        log_.misuse("drawAtPoint: " + buffer->name() + " is not locked");
        return;
    }
    // The picture's top row in rows from the top of the bitmap, whose origin is its bottom left.
    const auto height = static_cast<std::ptrdiff_t>(std::floor(size.height));
    const auto bottom = static_cast<std::ptrdiff_t>(std::floor(point.y));
    const auto top = static_cast<std::ptrdiff_t>(context.height) - bottom - height;
    const auto left = static_cast<std::ptrdiff_t>(std::floor(point.x));
    for (std::ptrdiff_t row = 0; row < static_cast<std::ptrdiff_t>(context.height); ++row) {
        for (std::ptrdiff_t column = 0; column < static_cast<std::ptrdiff_t>(context.width);
             ++column) {
            const std::ptrdiff_t y = target->flipped ? height - 1 - (row - top) : row - top;
            const std::ptrdiff_t x = column - left;
            if (x < 0 || y < 0 || x >= static_cast<std::ptrdiff_t>(std::floor(size.width)) ||
                y >= height) {
                continue;
            }
            std::uint8_t* pixel =
                context.memory + static_cast<std::size_t>(row) * context.bytesPerRow + column * 4;
            pixel[0] = 255;
            pixel[1] = static_cast<std::uint8_t>(x);
            pixel[2] = static_cast<std::uint8_t>(y);
            pixel[3] = 90;
        }
    }
}

void SimDrawing::requireCurrentContext(const std::string& call) {
    const std::lock_guard lock(mutex_);
    if (!states_[SimRole::key()].current) {
        log_.misuse(call + ": the thread has no current context");
    }
}

void SimDrawing::failBuffers(int count) {
    const std::lock_guard lock(mutex_);
    failingBuffers_ = count;
}

void SimDrawing::failContexts(int count) {
    const std::lock_guard lock(mutex_);
    failingContexts_ = count;
}

std::optional<SimPixels> SimDrawing::pixels(CVPixelBufferRef buffer) const {
    const std::lock_guard lock(mutex_);
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end()) {
        return std::nullopt;
    }
    SimPixels pixels = found->second->pixels;
    pixels.isLocked = found->second->isLocked();
    return pixels;
}

std::size_t SimDrawing::livePixelBuffers() const {
    const std::lock_guard lock(mutex_);
    return buffers_.size();
}

std::size_t SimDrawing::liveColorSpaces() const {
    const std::lock_guard lock(mutex_);
    return spaces_.size();
}

std::size_t SimDrawing::liveContexts() const {
    const std::lock_guard lock(mutex_);
    return contexts_.size();
}

std::size_t SimDrawing::savedStates() const {
    const std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& [key, state] : states_) {
        count += state.saved.size();
    }
    return count;
}

SimPixelBuffer* SimDrawing::live(CVPixelBufferRef buffer, const std::string& call) {
    const auto found = buffers_.find(buffer);
    if (found != buffers_.end()) {
        return found->second.get();
    }
    if (buffer != nullptr) {
        log_.misuse(call + ": no live pixel buffer");
    }
    return nullptr;
}

std::string SimDrawing::nameOfBuffer(CVPixelBufferRef buffer) const {
    const auto found = buffers_.find(buffer);
    return found != buffers_.end() ? found->second->name() : buffer ? "(released)" : "(null)";
}

SimPixelBuffer* SimDrawing::bufferAt(const void* memory) {
    for (const auto& [reference, buffer] : buffers_) {
        if (memory != nullptr && buffer->pixels.memory.data() == memory) {
            return buffer.get();
        }
    }
    return nullptr;
}

bool SimDrawing::isCurrentAnywhere(const CGContext* context) const {
    for (const auto& [key, state] : states_) {
        const auto* current = dynamic_cast<const SimGraphicsContext*>(state.current.get());
        if (current && &current->context == context) {
            return true;
        }
    }
    return false;
}

} // namespace vistrane
