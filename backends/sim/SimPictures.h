#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimThreads.h"
#include "platform/appkit/AppKit.h"
#include "platform/coregraphics/CoreGraphics.h"
#include "platform/corevideo/CoreVideo.h"

namespace vistrane {

/// A pixel buffer, or a copy of its contents.
struct SimPixels {
    std::string name;
    std::size_t width = 0;
    std::size_t height = 0;
    /// More than the pixels of a row need.
    std::size_t bytesPerRow = 0;
    int locks = 0;
    std::vector<std::uint8_t> memory;

    /// The four bytes of a pixel in memory order; `y` counts from the top.
    std::vector<int> pixel(std::size_t x, std::size_t y) const {
        const auto at = memory.begin() + static_cast<std::ptrdiff_t>(y * bytesPerRow + x * 4);
        return {at, at + 4};
    }
};

struct SimPixelBuffer final : CVPixelBuffer, SimPixels {};

/// The pool that an adaptor shows; it holds nothing.
struct SimPixelBufferPool final : CVPixelBufferPool {
    std::string name;
};

struct SimColorSpace final : CGColorSpace {
    std::string name;
};

struct SimBitmapContext final : CGContext {
    std::string name;
    std::uint8_t* memory = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bytesPerRow = 0;
};

/// CoreVideo, CoreGraphics and the AppKit's graphics state, one for each thread. Objects are
/// counted until they are released; those that are left when the sim ends are freed then. Any
/// thread.
class SimDrawing : public CoreVideo, public CoreGraphics, public virtual AppKit {
public:
    explicit SimDrawing(CallLog& log) : log_(log) {}

    // CoreVideo
    CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, std::uint32_t pixelFormat,
                                 const NSDictionary& attributes, CVPixelBufferRef* buffer) override;
    CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) override {
        return addLocks(1, buffer, flags, "CVPixelBufferLockBaseAddress: ");
    }
    CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) override {
        return addLocks(-1, buffer, flags, "CVPixelBufferUnlockBaseAddress: ");
    }
    void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) override;
    std::size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) override;
    void CVBufferRelease(CVPixelBufferRef buffer) override;
    void CVPixelBufferPoolRelease(CVPixelBufferPoolRef pool) override {
        log_.record("CVPixelBufferPoolRelease: %",
                    pool ? static_cast<SimPixelBufferPool*>(pool)->name : "(null)");
    }

    // CoreGraphics
    CGColorSpaceRef CGColorSpaceCreateWithName(CGColorSpaceName name) override;
    void CGColorSpaceRelease(CGColorSpaceRef space) override {
        release(spaces_, space, "CGColorSpaceRelease: ");
    }
    CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                       std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                       CGColorSpaceRef space, std::uint32_t bitmapInfo) override;
    void CFRelease(CGContextRef context) override;

    // AppKit
    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) override;
    void saveGraphicsState() override;
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) override;
    void restoreGraphicsState() override;

    /// Draws a picture of that size into the thread's current context.
    void draw(NSPoint point, NSSize size);
    /// A misuse when the calling thread has no current context.
    void requireCurrentContext(const std::string& call);

    /// Whether the next context cannot be created.
    bool failsNextContext = false;

    /// What a live buffer holds; nothing for a released one.
    std::optional<SimPixels> pixels(CVPixelBufferRef buffer) const;
    std::size_t livePixelBuffers() const { return buffers_.size(); }
    /// Colour spaces and contexts that were not released and graphics states that were not
    /// restored.
    std::size_t leftovers() const;

private:
    template <class Object, class Kind>
    using Table = std::map<const Kind*, std::unique_ptr<Object>>;
    /// The saved contexts, and on top the current one.
    using GraphicsState = std::vector<std::shared_ptr<NSGraphicsContext>>;

    /// The name of a live object.
    template <class Objects, class Reference>
    static std::string nameIn(const Objects& table, Reference reference) {
        const auto found = table.find(reference);
        return found != table.end() ? found->second->name : reference ? "(released)" : "(null)";
    }
    template <class Objects, class Reference>
    void release(Objects& table, Reference reference, const std::string& call) {
        const std::lock_guard lock(mutex_);
        log_.record(call + "%", nameIn(table, reference));
        if (table.erase(reference) == 0 && reference != nullptr) {
            log_.misuse(call + "was released before");
        }
    }
    CVReturn addLocks(int locks, CVPixelBufferRef buffer, std::uint64_t flags,
                      const std::string& call);
    SimPixelBuffer* live(CVPixelBufferRef buffer, const std::string& call) const;
    const SimPixelBuffer* bufferAt(const void* memory) const;
    GraphicsState& state() {
        return states_.try_emplace(SimRole::thread().get(), GraphicsState{nullptr}).first->second;
    }

    CallLog& log_;
    mutable std::recursive_mutex mutex_;
    Table<SimPixelBuffer, CVPixelBuffer> buffers_;
    Table<SimColorSpace, CGColorSpace> spaces_;
    Table<SimBitmapContext, CGContext> contexts_;
    std::map<const SimThread*, GraphicsState> states_;
};

class SimFiles;

/// The AppKit's picture half. A picture has a name, a size in points, and pixels that encode their
/// own place: red is the column and green the row from the top, each modulo 256, and blue is 90.
/// Its data are spelled by their name: "TIFF(name)", "PNG(name)". Files: any thread.
class SimPictures : public virtual AppKit {
public:
    SimPictures(CallLog& log, SimFiles& files, SimDrawing& drawing)
        : log_(log), files_(files), drawing_(drawing) {}

    std::shared_ptr<NSImage> imageNamed(const std::string& name) override {
        return resources.contains(name) ? picture(name, {16.0, 16.0}) : nullptr;
    }
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override;
    /// No bytes, and those that begin with "damaged", are not a picture.
    std::shared_ptr<NSImage> imageWithData(std::shared_ptr<NSData> data) override;
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(std::shared_ptr<NSData> data) override;

    /// Those bytes; as a picture they have that size in points.
    std::shared_ptr<NSData> data(const std::string& contents, NSSize size = {640.0, 480.0});
    std::shared_ptr<NSImage> picture(const std::string& name, NSSize size);

    /// The pictures of the program's resources.
    std::set<std::string> resources{"play1",    "play2",    "play1-s",  "play2-s",  "12",
                                    "tip1.png", "tip2.png", "tip3.png", "tip4.png", "tip5.png"};

private:
    template <class Base>
    friend struct SimPictureOf;

    CallLog& log_;
    SimFiles& files_;
    SimDrawing& drawing_;
};

} // namespace vistrane
