#pragma once

#include <memory>
#include <string>

#include "platform/appkit/NSImage.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

enum NSControlStateValue : NSInteger { NSControlStateValueOff = 0, NSControlStateValueOn = 1 };

/// A push button, toggle or check box. Main thread only, except `setEnabled`.
class NSButton : public NSObject {
public:
    /// Returns exactly the bytes that were set, even if they are not valid UTF-8.
    virtual std::string title() const = 0;
    virtual void setTitle(const std::string& title) = 0;

    /// 0 off, 1 on.
    virtual NSInteger state() const = 0;
    virtual void setState(NSInteger state) = 0;

    /// Any thread. A disabled button does not send its action.
    virtual void setEnabled(bool enabled) = 0;

    /// Null removes the picture.
    virtual void setImage(std::shared_ptr<NSImage> image) = 0;
    virtual void setAlternateImage(std::shared_ptr<NSImage> image) = 0;
};

} // namespace vistrane
