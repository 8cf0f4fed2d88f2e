#pragma once

#include <optional>
#include <string>

#include <QObject>
#include <QVariantMap>

class QDialog;
class QWidget;

namespace vistrane {

/// The folder dialog of the desktop's portal (org.freedesktop.portal.FileChooser), so that the user
/// gets the dialog of all other programs. Main thread only.
class FolderPortal final : public QObject {
    Q_OBJECT

public:
    struct Question {
        std::string title;
        /// The title of the confirming button; empty for the desktop's own.
        std::string prompt;
        /// Where the dialog starts; empty for the desktop's choice.
        std::string folder;
        /// The dialog belongs to its window; null for none.
        QWidget* parent = nullptr;
    };

    struct Answer {
        /// The folder's path as bytes; nothing if the user cancelled, or if the folder is not on
        /// this machine's file system.
        std::optional<std::string> path;
        bool isCancelled = false;
    };

    /// Asks the user and waits, while the program's windows take no input. Nothing if there is no
    /// portal that can ask for a folder, or if its dialog ended without the user.
    static std::optional<Answer> ask(const Question& question);

private slots:
    void responded(uint response, const QVariantMap& results);

private:
    FolderPortal() = default;

    std::optional<Answer> run(const Question& question);
    void listenTo(const QString& request);
    void end();

    /// Blocks the windows and runs the loop, but is never shown.
    QDialog* blocker_ = nullptr;
    QString request_;
    std::optional<Answer> answer_;
};

} // namespace vistrane
