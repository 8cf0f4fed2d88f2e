#pragma once

#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A list of titles, one of which is selected. Main thread only.
class NSPopUpButton : public NSObject {
public:
    virtual void removeAllItems() = 0;

    /// Appends an item. Titles are unique: an item with the same title is removed first. If that
    /// was the selected item, the first remaining one becomes selected. The first item of an empty
    /// list becomes selected.
    virtual void addItemWithTitle(const std::string& title) = 0;

    /// -1 if nothing is selected.
    virtual NSInteger indexOfSelectedItem() const = 0;
};

} // namespace vistrane
