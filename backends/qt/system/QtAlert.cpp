#include "backends/qt/system/QtAlert.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include <QApplication>

#include "backends/qt/system/AlertDialog.h"

namespace vistrane {

namespace {

/// The answer on its way from the main thread to a waiting one.
class Answer {
public:
    void set(int button) {
        const std::lock_guard lock(mutex_);
        button_ = button;
        given_.notify_all();
    }

    int wait() {
        std::unique_lock lock(mutex_);
        given_.wait(lock, [this] { return button_.has_value(); });
        return *button_;
    }

private:
    std::mutex mutex_;
    std::condition_variable given_;
    std::optional<int> button_;
};

AlertDialog* makeDialog(const QtDialogRules& rules, const AlertContents& contents) {
    QWidget* const accessory =
        contents.accessory && rules.widgetOf ? rules.widgetOf(*contents.accessory) : nullptr;
    return new AlertDialog(contents, accessory, dialogParent(rules));
}

/// Shows an alert that leaves other windows usable. One that would appear on top of a modal dialog
/// could not be used and covers it: it comes up when that is gone.
void showBeside(const std::shared_ptr<const QtDialogRules>& rules, const AlertContents& contents,
                const std::shared_ptr<Answer>& answer) {
    if (const QWidget* const modal = QApplication::activeModalWidget()) {
        QtRunLoop& loop = rules->loop;
        QObject::connect(modal, &QObject::destroyed, &loop, [rules, &loop, contents, answer] {
            // Not in the middle of the dialog's end: another one may follow it at once.
            loop.mainQueue().async(
                [rules, contents, answer] { showBeside(rules, contents, answer); });
        });
        return;
    }
    AlertDialog* const dialog = makeDialog(*rules, contents);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QDialog::finished, [answer](int button) { answer->set(button); });
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
    return rules_->loop.isMainThread() ? runOnMainThread() : runBesideMainThread();
}

NSModalResponse QtAlert::runOnMainThread() const {
    const QtRunLoop::ModalScope modal(rules_->loop);
    const std::unique_ptr<AlertDialog> dialog(makeDialog(*rules_, contents_));
    return NSAlertFirstButtonReturn + dialog->exec();
}

NSModalResponse QtAlert::runBesideMainThread() const {
    const auto answer = std::make_shared<Answer>();
    rules_->loop.mainQueue().async(
        [answer, rules = rules_, contents = contents_] { showBeside(rules, contents, answer); });
    return NSAlertFirstButtonReturn + answer->wait();
}

} // namespace vistrane
