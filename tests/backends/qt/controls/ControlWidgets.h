#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QAbstractItemView>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>
#include <gmock/gmock.h>

#include "backends/qt/controls/QtButton.h"
#include "backends/qt/controls/QtImageView.h"
#include "backends/qt/controls/QtPopUpButton.h"
#include "backends/qt/controls/QtProgressIndicator.h"
#include "backends/qt/controls/QtSlider.h"
#include "backends/qt/controls/QtTextField.h"
#include "backends/qt/controls/QtWindow.h"
#include "platform/appkit/NSSliderCell.h"
#include "tests/backends/qt/longest_wait.h"

namespace vistrane {

/// A window with controls, each on a widget of its own.
class ControlWidgets {
public:
    ControlWidgets() { window_.resize(400, 400); }

    template <typename Control, typename Widget>
    std::shared_ptr<Control> make() {
        auto* const widget = new Widget(&window_);
        layout_->addWidget(widget);
        auto control = std::make_shared<Control>(*widget);
        widgets_[control.get()] = widget;
        return control;
    }
    /// The widget of a control made here.
    template <typename Widget>
    Widget& widgetOf(const NSObject& control) {
        return dynamic_cast<Widget&>(*widgets_.at(&control));
    }

    std::shared_ptr<NSButton> button() { return make<QtButton, QPushButton>(); }
    std::shared_ptr<NSTextField> textField() { return make<QtTextField, QLineEdit>(); }
    std::string text(NSTextField& field) { return dynamic_cast<QtText&>(field).stringValue(); }
    std::shared_ptr<NSSlider> slider() {
        const auto slider = make<QtSlider, SliderWidget>();
        slider->setMaxValue(0.0);
        return slider;
    }
    std::shared_ptr<NSPopUpButton> popUp() { return make<QtPopUpButton, PopUpWidget>(); }
    std::vector<std::string> titles(NSPopUpButton& popUp) {
        return dynamic_cast<QtPopUpButton&>(popUp).itemTitles();
    }
    void pick(NSPopUpButton& popUp, NSInteger index) {
        auto& widget = widgetOf<PopUpWidget>(popUp);
        widget.showPopup();
        QAbstractItemView& list = *widget.view();
        list.setCurrentIndex(list.model()->index(static_cast<int>(index), 0));
        QTest::keyClick(&list, Qt::Key_Return);
    }
    std::shared_ptr<NSImageView> imageView() { return make<QtImageView, PictureWidget>(); }
    std::shared_ptr<NSProgressIndicator> progressBar() {
        return make<QtProgressIndicator, QProgressBar>();
    }
    double shownPart(NSProgressIndicator& progressBar) {
        const auto& bar = widgetOf<QProgressBar>(progressBar);
        return static_cast<double>(bar.value()) / bar.maximum();
    }
    std::shared_ptr<NSWindow> window() { return std::make_shared<QtWindow>(window_); }

    QWidget& widget() { return window_; }

    /// Shows the window, so that it takes keys and paints.
    void show() {
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_, longestWait));
    }

private:
    QWidget window_;
    QVBoxLayout* layout_ = new QVBoxLayout(&window_);
    std::map<const NSObject*, QWidget*> widgets_;
};

/// Records its calls and draws the knob as a picture, if it has one.
class RecordingCell final : public NSSliderCell {
public:
    void awakeFromNib() override { ++awoken_; }
    NSRect rectOfTickMarkAtIndex(NSInteger index) override {
        asked_.push_back(index);
        return tick_;
    }
    void drawKnob(NSRect rect) override {
        knob_ = rect;
        if (image_) {
            image_->drawInRect(rect, NSZeroRect, NSCompositingOperationSourceOver, 1.0);
        }
    }

    int awoken_ = 0;
    NSRect tick_ = NSZeroRect;
    std::shared_ptr<NSImage> image_;
    NSRect knob_;
    std::vector<NSInteger> asked_;
};

class ControlTest : public ::testing::Test {
protected:
    /// An action that counts how often it was sent.
    NSAction count() {
        return [this](NSObject* sender) {
            ++sent_;
            sender_ = sender;
        };
    }

    ControlWidgets widgets_;
    int sent_ = 0;
    NSObject* sender_ = nullptr;
};

} // namespace vistrane
