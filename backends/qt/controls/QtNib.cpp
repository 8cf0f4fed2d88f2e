#include "backends/qt/controls/QtNib.h"

#include <utility>

#include "backends/qt/controls/QtSlider.h"
#include "backends/qt/controls/QtWindow.h"

namespace vistrane {

void QtNib::addSender(const std::string& selector, Connection connect) {
    senders_.emplace(selector, std::move(connect));
}

void QtNib::addCellSlider(const std::string& className, std::shared_ptr<QtSlider> slider) {
    cellSliders_.emplace(className, std::move(slider));
}

void QtNib::setPanelWindow(std::shared_ptr<QtWindow> window) {
    panelWindow_ = std::move(window);
}

void QtNib::window(NSPanel& panel) {
    panel.setContents(panelWindow_);
}

void QtNib::sliderCell(const std::string& className,
                       std::function<std::shared_ptr<NSSliderCell>()> make) {
    const auto [first, last] = cellSliders_.equal_range(className);
    for (auto entry = first; entry != last; ++entry) {
        const std::shared_ptr<NSSliderCell> cell = make();
        cell->awakeFromNib();
        entry->second->setCell(cell);
    }
}

void QtNib::action(const std::string& selector, NSAction method) {
    const auto [first, last] = senders_.equal_range(selector);
    for (auto entry = first; entry != last; ++entry) {
        entry->second(method);
    }
}

} // namespace vistrane
