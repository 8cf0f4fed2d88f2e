#include "backends/console/ConsoleNib.h"

#include <utility>

namespace vistrane {

void ConsoleNib::action(const std::string& selector, NSAction method) {
    const auto senders = senders_.find(selector);
    if (senders != senders_.end()) {
        for (const auto& connect : senders->second) {
            connect(method);
        }
    }
    actions_[selector] = std::move(method);
}

bool ConsoleNib::send(const std::string& selector, NSObject* sender) const {
    const auto entry = actions_.find(selector);
    if (entry == actions_.end() || !entry->second) {
        return false;
    }
    entry->second(sender);
    return true;
}

} // namespace vistrane
