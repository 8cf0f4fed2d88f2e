#include "backends/sim/SimPictures.h"

#include <optional>

#include "backends/sim/SimDrawing.h"
#include "backends/sim/SimFiles.h"

namespace vistrane {

namespace {

/// The size of the picture in those bytes; nothing when they are none.
std::optional<NSSize> sizeOf(const std::shared_ptr<NSData>& data) {
    const auto* bytes = dynamic_cast<const SimData*>(data.get());
    if (!bytes || bytes->length() == 0 || bytes->name().compare(0, 7, "damaged") == 0) {
        return std::nullopt;
    }
    return bytes->pictureSize();
}

} // namespace

const std::uint8_t* SimData::bytes() const {
    return reinterpret_cast<const std::uint8_t*>(name().data());
}

bool SimData::writeToFile(const std::string& path, bool atomically) const {
    call("writeToFile: " + path + " atomically: " + yesNo(atomically));
    return files_.write(path, name());
}

NSSize SimImage::size() const {
    log_.recordGetter(name() + " size");
    return size_;
}

std::shared_ptr<NSData> SimImage::TIFFRepresentation() const {
    call("TIFFRepresentation");
    return std::make_shared<SimData>(log_, files_, "TIFF(" + name() + ")", size_);
}

void SimImage::drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                           double fraction) const {
    call("drawAtPoint: " + describe(point) + " fromRect: " + describe(fromRect) +
         " operation: " + std::to_string(operation) + " fraction: " + decimal(fraction));
    drawing_.draw(point, size_);
}

void SimImage::drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                          double fraction) const {
    call("drawInRect: " + describe(rect) + " fromRect: " + describe(fromRect) +
         " operation: " + std::to_string(operation) + " fraction: " + decimal(fraction));
    drawing_.requireCurrentContext("drawInRect");
}

std::shared_ptr<NSData>
SimBitmapImageRep::representationUsingType(NSBitmapImageFileType type,
                                           const NSBitmapImageProperties& properties) const {
    call("representationUsingType: " + std::to_string(type) + " NSImageCompressionFactor: " +
         decimal(static_cast<double>(properties.NSImageCompressionFactor)));
    return std::make_shared<SimData>(log_, files_, "PNG(" + name() + ")", size_);
}

std::shared_ptr<NSImage> SimPictures::named(const std::string& name) {
    log_.recordGetter("imageNamed: " + name);
    return resources.count(name) != 0 ? picture(name, {16.0, 16.0}) : nullptr;
}

std::shared_ptr<NSImage> SimPictures::withContentsOfFile(const std::string& path) {
    log_.record("imageWithContentsOfFile: " + path);
    const std::optional<NSSize> size = files_.pictureSize(path);
    return size ? picture(path, *size) : nullptr;
}

std::shared_ptr<NSImage> SimPictures::withData(const std::shared_ptr<NSData>& data) {
    log_.record("imageWithData: " + nameOf(data.get()));
    const std::optional<NSSize> size = sizeOf(data);
    return size ? picture(nameOf(data.get()), *size) : nullptr;
}

std::shared_ptr<NSBitmapImageRep> SimPictures::repWithData(const std::shared_ptr<NSData>& data) {
    log_.record("imageRepWithData: " + nameOf(data.get()));
    const std::optional<NSSize> size = sizeOf(data);
    return size ? std::make_shared<SimBitmapImageRep>(log_, files_, nameOf(data.get()), *size)
                : nullptr;
}

std::shared_ptr<SimData> SimPictures::data(const std::string& contents) {
    return std::make_shared<SimData>(log_, files_, contents);
}

std::shared_ptr<SimImage> SimPictures::picture(const std::string& name, NSSize size) {
    return std::make_shared<SimImage>(log_, files_, drawing_, name, size);
}

} // namespace vistrane
