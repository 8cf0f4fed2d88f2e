#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

#include "platform/qt/controls/QtButton.h"
#include "platform/qt/controls/QtImageView.h"
#include "platform/qt/controls/QtPopUpButton.h"
#include "platform/qt/controls/QtProgressIndicator.h"
#include "platform/qt/controls/QtSlider.h"
#include "platform/qt/controls/QtTextField.h"
#include "platform/qt/controls/QtWindow.h"

namespace vistrane {

/// A window that makes controls on widgets of its own.
class ControlWidgets {
public:
    template <typename Widget, typename... Arguments>
    Widget& add(Arguments&&... arguments) {
        auto* const widget = new Widget(std::forward<Arguments>(arguments)...);
        layout_->addWidget(widget);
        return *widget;
    }

    QWidget& window() { return window_; }

private:
    QWidget window_;
    QVBoxLayout* layout_ = new QVBoxLayout(&window_);
};

} // namespace vistrane
