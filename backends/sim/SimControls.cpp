#include "backends/sim/SimControls.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/NSString.h"

namespace vistrane {

bool SimWindow::makeFirstResponder(NSObject* responder) {
    mainCall("makeFirstResponder: " + nameOf(responder));
    if (endEditing) {
        endEditing();
    }
    return true;
}

void SimWindow::makeKeyAndOrderFront(NSObject*) {
    mainCall("makeKeyAndOrderFront");
}

void SimWindow::setTitle(const std::string& newTitle) {
    mainCall("setTitle: " + newTitle);
    title = newTitle;
}

void SimWindow::setTitlebarAppearsTransparent(bool transparent) {
    call("setTitlebarAppearsTransparent: " + yesNo(transparent));
    titlebarAppearsTransparent = transparent;
}

void SimTextField::setStringValue(const std::string& newText) {
    mainCall("setStringValue: " + newText);
    text = newText;
}

std::int32_t SimTextField::intValue() const {
    mainGetter("intValue");
    return vistrane::intValue(text);
}

NSInteger SimTextField::integerValue() const {
    mainGetter("integerValue");
    return vistrane::integerValue(text);
}

void SimTextField::setIntValue(std::int32_t value) {
    mainCall("setIntValue: " + std::to_string(value));
    text = std::to_string(value);
}

void SimTextField::setIntegerValue(NSInteger value) {
    mainCall("setIntegerValue: " + std::to_string(value));
    text = std::to_string(value);
}

void SimSlider::setMinValue(double value) {
    mainCall("setMinValue: " + decimal(value));
    value_.setMinimum(value);
}

void SimSlider::setMaxValue(double value) {
    mainCall("setMaxValue: " + decimal(value));
    value_.setMaximum(value);
}

std::int32_t SimSlider::intValue() const {
    mainGetter("intValue");
    return value_.intValue();
}

NSInteger SimSlider::integerValue() const {
    mainGetter("integerValue");
    return value_.integerValue();
}

float SimSlider::floatValue() const {
    mainGetter("floatValue");
    return value_.floatValue();
}

void SimSlider::setIntegerValue(NSInteger value) {
    mainCall("setIntegerValue: " + std::to_string(value));
    value_.set(static_cast<double>(value));
}

void SimSlider::setRange(double least, double greatest) {
    value_ = SliderValue(least, greatest, value_.doubleValue());
}

std::string SimButton::title() const {
    mainGetter("title");
    return currentTitle;
}

void SimButton::setTitle(const std::string& title) {
    mainCall("setTitle: " + title);
    currentTitle = title;
}

NSInteger SimButton::state() const {
    mainGetter("state");
    return currentState;
}

void SimButton::setState(NSInteger state) {
    mainCall("setState: " + std::to_string(state));
    currentState = state;
}

void SimButton::setEnabled(bool enabled) {
    call("setEnabled: " + yesNo(enabled));
    enabled_.store(enabled, std::memory_order_relaxed);
}

void SimButton::setImage(std::shared_ptr<NSImage> newImage) {
    mainCall("setImage: " + nameOf(newImage.get()));
    image = std::move(newImage);
}

void SimButton::setAlternateImage(std::shared_ptr<NSImage> newImage) {
    mainCall("setAlternateImage: " + nameOf(newImage.get()));
    alternateImage = std::move(newImage);
}

void SimImageView::setImage(std::shared_ptr<NSImage> newImage) {
    mainCall("setImage: " + nameOf(newImage.get()));
    image = std::move(newImage);
}

void SimPopUpButton::removeAllItems() {
    mainCall("removeAllItems");
    items_.clear();
    selected_ = -1;
}

void SimPopUpButton::addItemWithTitle(const std::string& title) {
    mainCall("addItemWithTitle: " + title);
    const auto same = std::find(items_.begin(), items_.end(), title);
    if (same != items_.end()) {
        const NSInteger index = same - items_.begin();
        items_.erase(same);
        if (index == selected_) {
            selected_ = items_.empty() ? -1 : 0;
        } else if (index < selected_) {
            --selected_;
        }
    }
    items_.push_back(title);
    if (items_.size() == 1) {
        selected_ = 0;
    }
}

NSInteger SimPopUpButton::indexOfSelectedItem() const {
    log_.requireMain(name() + " indexOfSelectedItem");
    call("indexOfSelectedItem");
    return selected_;
}

void SimProgressIndicator::setMaxValue(double newMaximum) {
    mainCall("setMaxValue: " + decimal(newMaximum));
    maximum = newMaximum;
}

void SimProgressIndicator::setDoubleValue(double newValue) {
    mainCall("setDoubleValue: " + decimal(newValue));
    value = newValue;
}

} // namespace vistrane
