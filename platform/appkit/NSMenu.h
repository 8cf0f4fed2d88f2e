#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/appkit/NSImage.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

class NSMenu;

/// An action of an object. Its argument is the control that sends it, or the object that calls it.
using NSAction = std::function<void(NSObject* sender)>;

/// An entry of a menu. Choosing it sends its action to its target, with the item as the sender. An
/// item without a target sends nothing. Main thread only.
class NSMenuItem : public NSObject {
public:
    /// A text that identifies the item's meaning; nothing until it is set.
    virtual std::optional<std::string> representedObject() const = 0;
    virtual void setRepresentedObject(const std::string& object) = 0;

    /// The object that receives the action; it outlives the item. Null: none.
    virtual void setTarget(NSObject* target) = 0;

    /// Null removes the picture.
    virtual void setImage(std::shared_ptr<NSImage> image) = 0;

    /// Replaces an earlier submenu. The item shares the ownership of `menu`.
    virtual void setSubmenu(std::shared_ptr<NSMenu> submenu) = 0;
};

/// A menu. Main thread only.
class NSMenu : public NSObject {
public:
    /// Appends an item and returns it. The menu shares its ownership. An empty key equivalent means
    /// none.
    virtual std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string& title, NSAction action,
                                                         const std::string& keyEquivalent) = 0;

    /// Closes the menu if it is open, without choosing anything.
    virtual void cancelTracking() = 0;
};

} // namespace vistrane
