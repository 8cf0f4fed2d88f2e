#pragma once

#include <utility>
#include <vector>

#include "platform/appkit/NSMenu.h"

namespace vistrane {

/// An entry that nobody sees.
class ConsoleMenuItem final : public NSMenuItem {
public:
    std::optional<std::string> representedObject() const override { return representedObject_; }
    void setRepresentedObject(const std::string& object) override { representedObject_ = object; }
    void setTarget(NSObject*) override {}
    void setImage(std::shared_ptr<NSImage>) override {}
    void setSubmenu(std::shared_ptr<NSMenu> submenu) override { submenu_ = std::move(submenu); }

private:
    std::optional<std::string> representedObject_;
    std::shared_ptr<NSMenu> submenu_;
};

/// A menu that nobody opens.
class ConsoleMenu final : public NSMenu {
public:
    std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string&, NSAction,
                                                 const std::string&) override {
        items_.push_back(std::make_shared<ConsoleMenuItem>());
        return items_.back();
    }
    void cancelTracking() override {}

private:
    std::vector<std::shared_ptr<NSMenuItem>> items_;
};

} // namespace vistrane
