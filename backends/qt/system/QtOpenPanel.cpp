#include "backends/qt/system/QtOpenPanel.h"

#include <QAbstractItemView>
#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QShortcut>

#include "backends/qt/system/FolderPortal.h"

namespace vistrane {

namespace {

/// Prevents renaming, moving and deleting files, such as frames. A new folder can still be created
/// and named.
void forbidChanges(QFileDialog& dialog) {
    for (const char* const name : {"qt_rename_action", "qt_delete_action"}) {
        if (auto* const action = dialog.findChild<QAction*>(name)) {
            action->setVisible(false);
        }
    }
    for (QShortcut* const shortcut : dialog.findChildren<QShortcut*>()) {
        if (shortcut->key() == QKeySequence(Qt::Key_Delete)) {
            shortcut->setEnabled(false);
        }
    }
    for (const char* const name : {"listView", "treeView"}) {
        if (auto* const view = dialog.findChild<QAbstractItemView*>(name)) {
            view->setEditTriggers(QAbstractItemView::NoEditTriggers);
            // Disabled, because dropping a folder onto another one would move it.
            view->setDragDropMode(QAbstractItemView::NoDragDrop);
        }
    }
}

/// Qt's dialog, which takes the name of a folder that is still to be made.
class FolderDialog final : public QFileDialog {
public:
    using QFileDialog::QFileDialog;

protected:
    void accept() override {
        const QString chosen = selectedFiles().value(0);
        if (fileMode() == Directory && !testOption(ReadOnly) && !QFileInfo::exists(chosen)) {
            QDir().mkdir(chosen); // if this fails, the dialog says that there is no such folder
        }
        QFileDialog::accept();
    }
};

} // namespace

NSModalResponse QtOpenPanel::runModal() {
    const QtRunLoop::ModalScope modal(rules_->loop);
    url_ = std::nullopt;
    if (canChooseDirectories_ && !canChooseFiles_) {
        const auto answer =
            FolderPortal::ask({title_, prompt_, rules_->folder(), dialogParent(*rules_)});
        if (answer) {
            if (answer->path) {
                url_ = NSURL::fileURLWithPath(*answer->path);
            }
            return answer->isCancelled ? NSModalResponseCancel : NSModalResponseOK;
        }
    }
    return askQt();
}

NSModalResponse QtOpenPanel::askQt() {
    const std::string start = rules_->folder();
    FolderDialog dialog(dialogParent(*rules_), QString::fromStdString(title_),
                        start.empty() ? QDir::homePath() : QFile::decodeName(start.c_str()));
    dialog.setObjectName("openPanel");
    // Not the dialog of Qt's desktop theme, which does not allow setting the title of the
    // confirming button.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::ShowDirsOnly, canChooseDirectories_ && !canChooseFiles_);
    dialog.setOption(QFileDialog::ReadOnly, !canCreateDirectories_);
    dialog.setFileMode(canChooseFiles_ ? QFileDialog::ExistingFile : QFileDialog::Directory);
    forbidChanges(dialog);
    if (!prompt_.empty()) {
        dialog.setLabelText(QFileDialog::Accept, QString::fromStdString(prompt_));
    }
    if (dialog.exec() != QDialog::Accepted) {
        return NSModalResponseCancel;
    }
    const QString chosen = dialog.selectedFiles().value(0);
    if (QFileInfo::exists(chosen)) {
        url_ = NSURL::fileURLWithPath(QFile::encodeName(QDir::cleanPath(chosen)).toStdString());
    }
    return NSModalResponseOK;
}

} // namespace vistrane
