#pragma once

#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A list of titles, one of them selected. Main thread only.
class NSPopUpButton : public NSObject {
public:
    virtual void removeAllItems() = 0;

    /// Appends an item. An item of the same title is removed first: titles are unique. When that
    /// was the selected one, the first of those that are left is selected. The first item of an
    /// empty list becomes the selected one.
    virtual void addItemWithTitle(const std::string& title) = 0;

    /// -1 when nothing is selected.
    virtual NSInteger indexOfSelectedItem() const = 0;
};

} // namespace vistrane
