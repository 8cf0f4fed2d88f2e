#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/appkit/AppKit.h"
#include "platform/coregraphics/CoreGraphics.h"
#include "platform/corevideo/CoreVideo.h"

namespace vistrane {

/// What is known of a pixel buffer at some moment. It holds no pixels: nothing is drawn.
struct SimPixels {
    std::string name;
    std::size_t width = 0;
    std::size_t height = 0;
    int locks = 0;
};

struct SimPixelBuffer final : CVPixelBuffer, SimPixels {};

/// A pool, a colour space or a bitmap context.
template <class Base>
struct SimNamed final : Base {
    std::string name;
};
using SimPixelBufferPool = SimNamed<CVPixelBufferPool>;
using SimColorSpace = SimNamed<CGColorSpace>;
using SimBitmapContext = SimNamed<CGContext>;

/// CoreVideo, CoreGraphics and the AppKit's graphics state. Objects are counted until they are
/// released; those that are left when the sim ends are freed then. Any thread.
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
    void CFRelease(CGContextRef context) override { release(contexts_, context, "CFRelease: "); }

    // AppKit
    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) override;
    void saveGraphicsState() override {
        log_.record("saveGraphicsState");
        ++savedStates_;
    }
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) override {
        log_.record("setCurrentContext: %", context);
    }
    void restoreGraphicsState() override {
        log_.record("restoreGraphicsState");
        --savedStates_;
    }

    /// Whether the next context cannot be created.
    bool failsNextContext = false;

    /// Nothing for a released buffer.
    std::optional<SimPixels> pixels(CVPixelBufferRef buffer) const;
    std::size_t livePixelBuffers() const { return buffers_.size(); }
    /// Colour spaces and contexts that were not released and graphics states that were not
    /// restored.
    int leftovers() const {
        const std::lock_guard lock(mutex_);
        return static_cast<int>(spaces_.size() + contexts_.size()) + savedStates_;
    }

private:
    template <class Object, class Kind>
    using Table = std::map<const Kind*, std::unique_ptr<Object>>;

    template <class Object, class Kind>
    Object* make(Table<Object, Kind>& table, const char* kind) {
        auto made = std::make_unique<Object>();
        made->name = log_.nextName(kind);
        Object* const object = made.get();
        table[object] = std::move(made);
        return object;
    }
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

    CallLog& log_;
    mutable std::recursive_mutex mutex_;
    Table<SimPixelBuffer, CVPixelBuffer> buffers_;
    Table<SimColorSpace, CGColorSpace> spaces_;
    Table<SimBitmapContext, CGContext> contexts_;
    std::atomic<int> savedStates_{0};
};

class SimFiles;

/// A hint.
struct SimExpectedImages {
    std::shared_ptr<const std::vector<std::string>> paths;
    std::size_t first = 0;
    ImageUse use = ImageUse::View;

    /// The path that it begins with; "nothing" past the end of the list, "end" without a list.
    std::string text() const {
        return !paths ? "end" : first < paths->size() ? (*paths)[first] : "nothing";
    }
};

/// The AppKit's picture half. A picture has a name and a size in points. Its data are spelled by
/// their name: "TIFF(name)", "PNG(name)". Files: any thread.
class SimPictures : public virtual AppKit {
public:
    SimPictures(CallLog& log, SimFiles& files) : log_(log), files_(files) {}

    std::shared_ptr<NSImage> imageNamed(const std::string& name) override {
        return resources.contains(name) ? picture(name, {16.0, 16.0}) : nullptr;
    }
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override;
    /// Not in the call log, because hints have no visible effect.
    void expectImages(std::shared_ptr<const std::vector<std::string>> paths, std::size_t first,
                      ImageUse use) override {
        const std::lock_guard lock(expectedMutex_);
        expected_.push_back({std::move(paths), first, use});
    }
    /// No bytes, and those that begin with "damaged", are not a picture.
    std::shared_ptr<NSImage> imageWithData(std::shared_ptr<NSData> data) override;
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(std::shared_ptr<NSData> data) override;

    /// Those bytes; as a picture they have that size in points.
    std::shared_ptr<NSData> data(const std::string& contents, NSSize size = {640.0, 480.0});
    std::shared_ptr<NSImage> picture(const std::string& name, NSSize size);

    /// The hints of that use since the last call, as texts.
    std::vector<std::string> takeExpected(ImageUse use) {
        const std::lock_guard lock(expectedMutex_);
        std::vector<std::string> texts;
        for (const SimExpectedImages& hint : expected_) {
            if (hint.use == use) {
                texts.push_back(hint.text());
            }
        }
        std::erase_if(expected_, [use](const auto& hint) { return hint.use == use; });
        return texts;
    }

    /// The pictures of the program's resources.
    std::set<std::string> resources{"play1",    "play2",    "play1-s",  "play2-s",  "12",
                                    "tip1.png", "tip2.png", "tip3.png", "tip4.png", "tip5.png"};

private:
    template <class Base>
    friend struct SimPictureOf;

    CallLog& log_;
    SimFiles& files_;
    std::mutex expectedMutex_;
    std::vector<SimExpectedImages> expected_;
};

} // namespace vistrane
