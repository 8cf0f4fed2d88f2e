#include "backends/qt/system/QtAlert.h"

#include <future>
#include <utility>

#include <QApplication>

#include "backends/qt/system/AlertDialog.h"

namespace vistrane {

namespace {

/// Passes the answer from the main thread to a waiting thread.
using Answer = std::promise<int>;

AlertDialog* makeDialog(const QtDialogRules& rules, const AlertContents& contents) {
    QWidget* const accessory =
        contents.accessory && rules.widgetOf ? rules.widgetOf(*contents.accessory) : nullptr;
    return new AlertDialog(contents, accessory, dialogParent(rules));
}

/// Shows an alert that leaves other windows usable. Waits for the end of a modal dialog, which
/// would block the alert and be covered by it.
void showModeless(const std::shared_ptr<const QtDialogRules>& rules, const AlertContents& contents,
                  const std::shared_ptr<Answer>& answer) {
    if (const QWidget* const modal = QApplication::activeModalWidget()) {
        QtRunLoop& loop = rules->loop;
        QObject::connect(modal, &QObject::destroyed, &loop, [rules, &loop, contents, answer] {
            // Not within the dialog's destructor, because another dialog may follow immediately.
            loop.mainQueue().async(
                [rules, contents, answer] { showModeless(rules, contents, answer); });
        });
        return;
    }
    AlertDialog* const dialog = makeDialog(*rules, contents);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(
        dialog, &QDialog::finished, dialog, [answer](int button) { answer->set_value(button); },
        Qt::SingleShotConnection);
    dialog->show();
}

} // namespace

QWidget* dialogParent(const QtDialogRules& rules) {
    if (QWidget* const modal = QApplication::activeModalWidget()) {
        return modal;
    }
    return rules.parent ? rules.parent() : nullptr;
}

QtAlert::QtAlert(std::shared_ptr<const QtDialogRules> rules) : rules_(std::move(rules)) {}

QtAlert::QtAlert(std::shared_ptr<const QtDialogRules> rules, const NSError& error)
    : rules_(std::move(rules)) {
    contents_.message = error.localizedDescription;
    contents_.informative = error.domain + " error " + std::to_string(error.code);
}

NSModalResponse QtAlert::runModal() {
    if (contents_.buttons.empty()) {
        contents_.buttons.emplace_back("OK");
    }
    return rules_->loop.isMainThread() ? runOnMainThread() : runOnOtherThread();
}

NSModalResponse QtAlert::runOnMainThread() const {
    const QtRunLoop::ModalScope modal(rules_->loop);
    const std::unique_ptr<AlertDialog> dialog(makeDialog(*rules_, contents_));
    return NSAlertFirstButtonReturn + dialog->exec();
}

NSModalResponse QtAlert::runOnOtherThread() const {
    const auto answer = std::make_shared<Answer>();
    rules_->loop.mainQueue().async(
        [answer, rules = rules_, contents = contents_] { showModeless(rules, contents, answer); });
    return NSAlertFirstButtonReturn + answer->get_future().get();
}

} // namespace vistrane
