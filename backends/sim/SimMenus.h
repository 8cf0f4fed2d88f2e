#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/appkit/NSMenu.h"

namespace vistrane {

class SimMenu;

/// A menu's entry, named after its menu and its title, as in "menu1.Item".
class SimMenuItem final : public NSMenuItem, public SimObject {
public:
    SimMenuItem(CallLog& log, const std::string& name) : SimObject(log, name) {}

    std::optional<std::string> representedObject() const override;
    void setRepresentedObject(const std::string& newObject) override;
    void setTarget(NSObject* newTarget) override;
    void setImage(std::shared_ptr<NSImage> newImage) override;
    void setSubmenu(std::shared_ptr<NSMenu> newSubmenu) override;

    /// The user chooses the item: nothing is sent without a target or an action.
    void choose();

    std::string title;
    std::string keyEquivalent;
    NSAction action;
    std::optional<std::string> object;
    NSObject* target = nullptr;
    std::shared_ptr<NSImage> image;
    std::shared_ptr<SimMenu> submenu;
};

class SimMenu final : public NSMenu, public SimObject {
public:
    SimMenu(CallLog& log, const std::string& name) : SimObject(log, name) {}

    std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string& title, NSAction action,
                                                 const std::string& keyEquivalent) override;
    void cancelTracking() override;

    std::vector<std::shared_ptr<SimMenuItem>> items;
    /// A menu opens from one item only.
    bool isSubmenu = false;
};

} // namespace vistrane
