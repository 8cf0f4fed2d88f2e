#include "backends/qt/menus/HiddenMenuBar.h"

#include <QAction>
#include <QList>
#include <QMenu>

namespace vistrane {

namespace {

void addActionsWithin(const QList<QAction*>& actions, QWidget& holder) {
    for (QAction* const action : actions) {
        if (const QMenu* const menu = action->menu<QMenu*>()) {
            addActionsWithin(menu->actions(), holder);
        } else {
            holder.addAction(action);
        }
    }
}

/// In a window that was never shown, isHidden() is true for every child that was not shown
/// explicitly.
bool wasHidden(const QMenuBar& menuBar) {
    return menuBar.isHidden() && menuBar.testAttribute(Qt::WA_WState_ExplicitShowHide);
}

} // namespace

HiddenMenuBar::HiddenMenuBar(QMenuBar& menuBar)
    : menuBar_(&menuBar), native_(menuBar.isNativeMenuBar()), hidden_(wasHidden(menuBar)),
      shortcuts_(new QWidget(menuBar.window())) {
    shortcuts_->setFixedSize(0, 0);
    shortcuts_->setAttribute(Qt::WA_TransparentForMouseEvents);
    addActionsWithin(menuBar.actions(), *shortcuts_);
    shortcuts_->show();
    // If the desktop shows the menu bar elsewhere, it must return to the window first.
    menuBar.setNativeMenuBar(false);
    menuBar.hide();
}

HiddenMenuBar::~HiddenMenuBar() {
    delete shortcuts_;
    if (menuBar_ != nullptr) {
        menuBar_->setNativeMenuBar(native_);
        menuBar_->setVisible(!hidden_);
    }
}

QMenuBar* HiddenMenuBar::menuBar() const {
    return menuBar_;
}

} // namespace vistrane
