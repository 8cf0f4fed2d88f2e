#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backends/pictures/Pictures.h"
#include "platform/appkit/AppKit.h"

namespace vistrane {

/// The picture messages of AppKit. The front ends add the rest.
class PictureAppKit : public AppKit {
public:
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override {
        return pictures_.imageWithContentsOfFile(path);
    }
    void expectImages(std::shared_ptr<const std::vector<std::string>> paths, std::size_t first,
                      ImageUse use) override {
        pictures_.expectImages(std::move(paths), first, use);
    }
    std::shared_ptr<NSImage> imageWithData(std::shared_ptr<NSData> data) override {
        return pictures_.imageWithData(data);
    }
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(std::shared_ptr<NSData> data) override {
        return pictures_.imageRepWithData(data);
    }

    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) override {
        return pictures_.graphicsContextWithCGContext(context, flipped);
    }
    void saveGraphicsState() override { pictures_.saveGraphicsState(); }
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) override {
        pictures_.setCurrentContext(std::move(context));
    }
    void restoreGraphicsState() override { pictures_.restoreGraphicsState(); }

protected:
    /// `pictures` outlives this object.
    explicit PictureAppKit(const Pictures& pictures) : pictures_(pictures) {}

private:
    const Pictures& pictures_;
};

} // namespace vistrane
