#pragma once

#include <string>
#include <utility>
#include <vector>

#include <QObject>

#include "backends/qt/controls/Action.h"
#include "backends/qt/controls/PopUpWidget.h"
#include "platform/appkit/NSPopUpButton.h"

namespace vistrane {

/// A list of titles, kept byte for byte, on a widget that outlives it. Selecting an item sends the
/// action, even if it is already selected. The selection follows its title when the items move.
class QtPopUpButton final : public NSPopUpButton {
public:
    explicit QtPopUpButton(PopUpWidget& widget);

    void removeAllItems() override;
    void addItemWithTitle(const std::string& title) override;
    NSInteger indexOfSelectedItem() const override { return widget_.currentIndex(); }

    void setAction(NSAction action) { action_.set(std::move(action)); }
    const std::vector<std::string>& itemTitles() const { return titles_; }

private:
    PopUpWidget& widget_;
    std::vector<std::string> titles_;
    Action action_;
    QObject connections_;
};

} // namespace vistrane
