#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSSliderCell.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Connects one object with the loaded interface file. Main thread only.
///
/// An object requests its outlets and registers its actions, each by name. The file says which
/// control an outlet is and which controls send an action. Names are per object: the same outlet
/// name may refer to different controls of two objects.
class NSNib {
public:
    virtual ~NSNib() = default;
    NSNib(const NSNib&) = delete;
    NSNib& operator=(const NSNib&) = delete;

    /// Sets `field` to the control of that outlet name; leaves it null if the file has none of the
    /// field's type.
    template <typename Control>
    void outlet(const std::string& name, std::shared_ptr<Control>& field) {
        if (auto found = std::dynamic_pointer_cast<Control>(control(name))) {
            field = std::move(found);
        }
    }

    /// Registers a class of slider cells. The file creates one for each slider that names the
    /// class, and calls its `awakeFromNib`.
    virtual void sliderCell(const std::string& className,
                            std::function<std::shared_ptr<NSSliderCell>()> make) = 0;

    /// Registers an action under its selector, such as "startRunning:", or a message to a window's
    /// delegate, such as "windowWillClose:".
    virtual void action(const std::string& selector, NSAction method) = 0;

protected:
    NSNib() = default;

    /// The control of that outlet name; null if the file has none.
    virtual std::shared_ptr<NSObject> control(const std::string& name) const = 0;
};

} // namespace vistrane
