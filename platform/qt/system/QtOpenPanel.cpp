#include "platform/qt/system/QtOpenPanel.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include "platform/qt/system/dialog_text.h"

namespace vistrane {

NSModalResponse QtOpenPanel::runModal() {
    const QtRunLoop::ModalScope modal(rules_->loop);
    QFileDialog dialog(dialogParent(*rules_), dialogText(title_), QDir::homePath());
    dialog.setObjectName("openPanel");
    // Qt's own: the desktops' dialogs know no title for the button that confirms.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::ShowDirsOnly, canChooseDirectories_ && !canChooseFiles_);
    dialog.setOption(QFileDialog::ReadOnly, !canCreateDirectories_);
    dialog.setFileMode(canChooseFiles_ ? QFileDialog::ExistingFile : QFileDialog::Directory);
    if (!prompt_.empty()) {
        dialog.setLabelText(QFileDialog::Accept, dialogText(prompt_));
    }
    url_ = std::nullopt;
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
