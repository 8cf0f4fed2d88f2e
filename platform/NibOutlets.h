#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/appkit/NSNib.h"

namespace vistrane {

/// The outlets of an interface file as a table; a back end implements the rest. Main thread only.
class NibOutlets : public NSNib {
public:
    /// Makes `control` the outlet of that name, replacing an earlier one. Null: the file lacks the
    /// outlet.
    void addOutlet(const std::string& name, std::shared_ptr<NSObject> control);

    // A field is filled only with a control of the field's type.
    void outlet(const std::string& name, std::shared_ptr<NSWindow>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSTextField>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSSlider>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSButton>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSImageView>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSView>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSMenu>& field) final;
    void outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) final;

private:
    template <typename Type>
    void fill(const std::string& name, std::shared_ptr<Type>& field) const;

    std::map<std::string, std::shared_ptr<NSObject>> outlets_;
};

} // namespace vistrane
