#include "backends/qt/controls/QtPopUpButton.h"

#include <algorithm>

#include "backends/qt/controls/shown_text.h"

namespace vistrane {

QtPopUpButton::QtPopUpButton(PopUpWidget& widget) : widget_(widget) {
    widget.clear();
    // Emitted for every selection, even of the item that is already selected.
    QObject::connect(&widget, &QComboBox::activated, &connections_,
                     [this](int) { action_.send(this); });
}

void QtPopUpButton::removeAllItems() {
    titles_.clear();
    widget_.clear();
    widget_.forgetPick();
}

void QtPopUpButton::addItemWithTitle(const std::string& title) {
    const auto same = std::find(titles_.begin(), titles_.end(), title);
    NSInteger selected = indexOfSelectedItem();
    if (same != titles_.end()) {
        const NSInteger removed = same - titles_.begin();
        titles_.erase(same);
        widget_.removeItem(static_cast<int>(removed));
        if (removed == selected) {
            selected = 0;
        } else if (removed < selected) {
            --selected;
        }
    }
    titles_.push_back(title);
    widget_.addItem(shownText(title));
    widget_.setCurrentIndex(titles_.size() == 1 ? 0 : static_cast<int>(selected));
}

} // namespace vistrane
