#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSNib.h"

namespace vistrane {

/// An interface file as two tables: the control of each outlet, and the controls that send each
/// action. Main thread only.
class NibTables : public NSNib {
public:
    using Connection = std::function<void(const NSAction&)>;

    /// Makes `control` the outlet of that name, replacing an earlier one. Null: the file lacks the
    /// outlet.
    void addOutlet(const std::string& name, std::shared_ptr<NSObject> control) {
        outlets_[name] = std::move(control);
    }
    /// Calls `connect` with the action of that selector when the object registers it.
    void addSender(const std::string& selector, Connection connect) {
        senders_.emplace(selector, std::move(connect));
    }

    /// Does nothing for an action that no control sends.
    void action(const std::string& selector, NSAction method) override {
        const auto [first, last] = senders_.equal_range(selector);
        for (auto sender = first; sender != last; ++sender) {
            sender->second(method);
        }
    }

protected:
    std::shared_ptr<NSObject> control(const std::string& name) const final {
        const auto entry = outlets_.find(name);
        return entry == outlets_.end() ? nullptr : entry->second;
    }

private:
    std::map<std::string, std::shared_ptr<NSObject>> outlets_;
    std::multimap<std::string, Connection> senders_;
};

} // namespace vistrane
