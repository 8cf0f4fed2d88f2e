#include "platform/console/ConsolePopUpButton.h"

#include <algorithm>

namespace vistrane {

void ConsolePopUpButton::removeAllItems() {
    titles_.clear();
    selected_ = -1;
}

void ConsolePopUpButton::addItemWithTitle(const std::string& title) {
    const auto same = std::find(titles_.begin(), titles_.end(), title);
    const NSInteger removed = same == titles_.end() ? -1 : same - titles_.begin();
    if (removed >= 0) {
        titles_.erase(same);
    }
    titles_.push_back(title);
    const auto last = static_cast<NSInteger>(titles_.size()) - 1;
    if (last == 0 || (removed >= 0 && removed == selected_)) {
        selected_ = last;
    } else if (removed >= 0 && removed < selected_) {
        --selected_;
    }
}

bool ConsolePopUpButton::userPicks(NSInteger index) {
    if (index < 0 || index >= static_cast<NSInteger>(titles_.size())) {
        return false;
    }
    selected_ = index;
    if (action_) {
        action_(this);
    }
    return true;
}

} // namespace vistrane
