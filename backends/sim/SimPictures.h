#pragma once

#include <set>
#include <string>

#include "backends/sim/CallLog.h"
#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSImage.h"

namespace vistrane {

class SimDrawing;
class SimFiles;

/// Bytes; named by what they spell. As a picture they have that size in points.
class SimData final : public NSData, public SimObject {
public:
    SimData(CallLog& log, SimFiles& files, const std::string& contents,
            NSSize size = {640.0, 480.0})
        : SimObject(log, contents), files_(files), size_(size) {}

    const std::uint8_t* bytes() const override;
    std::size_t length() const override { return name().size(); }
    bool writeToFile(const std::string& path, bool atomically) const override;
    NSSize pictureSize() const { return size_; }

private:
    SimFiles& files_;
    NSSize size_;
};

/// A picture with a name and a size in points, and pixels that tell their own place: red is the
/// column and green the row from the top, each modulo 256, and blue is 90.
class SimImage final : public NSImage, public SimObject {
public:
    SimImage(CallLog& log, SimFiles& files, SimDrawing& drawing, const std::string& name,
             NSSize size)
        : SimObject(log, name), files_(files), drawing_(drawing), size_(size) {}

    NSSize size() const override;
    /// Spells "TIFF(name)".
    std::shared_ptr<NSData> TIFFRepresentation() const override;
    void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                     double fraction) const override;
    /// Recorded, without a pixel drawn.
    void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                    double fraction) const override;

private:
    SimFiles& files_;
    SimDrawing& drawing_;
    NSSize size_;
};

class SimBitmapImageRep final : public NSBitmapImageRep, public SimObject {
public:
    SimBitmapImageRep(CallLog& log, SimFiles& files, const std::string& contents, NSSize size)
        : SimObject(log, contents), files_(files), size_(size) {}

    /// Spells "PNG(name)".
    std::shared_ptr<NSData>
    representationUsingType(NSBitmapImageFileType type,
                            const NSBitmapImageProperties& properties) const override;

private:
    SimFiles& files_;
    NSSize size_;
};

/// Where pictures come from. Files: any thread.
class SimPictures {
public:
    SimPictures(CallLog& log, SimFiles& files, SimDrawing& drawing)
        : log_(log), files_(files), drawing_(drawing) {}
    SimPictures(const SimPictures&) = delete;
    SimPictures& operator=(const SimPictures&) = delete;

    std::shared_ptr<NSImage> named(const std::string& name);
    std::shared_ptr<NSImage> withContentsOfFile(const std::string& path);
    /// No bytes, and those that begin with "damaged", are no picture.
    std::shared_ptr<NSImage> withData(const std::shared_ptr<NSData>& data);
    std::shared_ptr<NSBitmapImageRep> repWithData(const std::shared_ptr<NSData>& data);
    std::shared_ptr<SimData> data(const std::string& contents);
    std::shared_ptr<SimImage> picture(const std::string& name, NSSize size);

    /// The pictures of the program's resources.
    std::set<std::string> resources{"play1",    "play2",    "play1-s",  "play2-s",  "12",
                                    "tip1.png", "tip2.png", "tip3.png", "tip4.png", "tip5.png"};

private:
    CallLog& log_;
    SimFiles& files_;
    SimDrawing& drawing_;
};

} // namespace vistrane
