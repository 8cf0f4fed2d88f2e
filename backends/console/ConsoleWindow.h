#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backends/console/ConsoleTextField.h"
#include "platform/appkit/NSWindow.h"

namespace vistrane {

/// A window that nobody sees, with the fields whose edits it ends.
class ConsoleWindow final : public NSWindow {
public:
    void addField(std::shared_ptr<ConsoleTextField> field) { fields_.push_back(std::move(field)); }

    bool makeFirstResponder(NSObject* responder) override {
        for (const std::shared_ptr<ConsoleTextField>& field : fields_) {
            if (field.get() != responder) {
                field->endEditing();
            }
        }
        return true;
    }
    void makeKeyAndOrderFront(NSObject*) override {}
    void setTitle(const std::string&) override {}
    void setTitlebarAppearsTransparent(bool) override {}

private:
    std::vector<std::shared_ptr<ConsoleTextField>> fields_;
};

} // namespace vistrane
