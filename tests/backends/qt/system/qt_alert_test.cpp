#include "backends/qt/system/QtAlert.h"

#include <atomic>

#include <QAccessible>
#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <gtest/gtest.h>

#include "backends/qt/system/AlertText.h"
#include "backends/qt/system/QtOpenPanel.h"
#include "tests/backends/qt/system/QtSystemBackend.h"
#include "tests/contract/contract.h"

namespace vistrane {
namespace {

class QtAlertTest : public ::testing::Test {
protected:
    std::unique_ptr<NSAlert> alertWith(const std::vector<const char*>& titles) {
        std::unique_ptr<NSAlert> alert = backend_.alert();
        alert->setMessageText("A <b>message</b>");
        alert->setInformativeText("Information & more.\n");
        for (const char* title : titles) {
            alert->addButtonWithTitle(title);
        }
        return alert;
    }

    /// Runs an alert on another thread, and the main loop until that ends.
    void runBeside() {
        const auto ended = std::make_shared<std::atomic<bool>>(false);
        backend_.foundation()
            .threadWithEntry([this, ended] {
                alertWith({"Got it"})->runModal();
                *ended = true;
            })
            ->start();
        ASSERT_TRUE(contract::runUntil(backend_.foundation(), [ended] { return ended->load(); }));
    }

    void showsWithinScreen(const std::string& message, const std::string& informative,
                           bool scrolls) {
        const std::unique_ptr<NSAlert> alert = backend_.alert();
        alert->setMessageText(message);
        alert->setInformativeText(informative);
        alert->addButtonWithTitle("Got it");
        alert->addButtonWithTitle("Cancel");
        backend_.user().withNext(0.0, [&](QDialog& dialog) {
            EXPECT_TRUE(dialog.screen()->availableGeometry().contains(dialog.frameGeometry()));
            for (const auto* const button : dialog.findChildren<QPushButton*>()) {
                const QPoint corner = button->mapTo(&dialog, QPoint());
                EXPECT_TRUE(dialog.rect().contains(QRect(corner, button->size())));
            }
            for (const auto* const text : dialog.findChildren<AlertText*>()) {
                EXPECT_LE(text->document()->size().width(), text->width());
                EXPECT_LE(text->document()->size().height(), text->height());
            }
            EXPECT_EQ(dialog.findChild<AlertText*>("message")->text().toStdString(), message);
            const auto* const area = dialog.findChild<QScrollArea*>("texts");
            EXPECT_EQ(area->verticalScrollBar()->maximum() > 0, scrolls);
            EXPECT_GE(area->viewport()->width(), area->widget()->width());
            dialog.reject();
        });
        alert->runModal();
    }

    /// The accessible names of all labels below `object`.
    static void collectLabels(const QAccessibleInterface& object, QStringList& labels) {
        for (int number = 0; number < object.childCount(); ++number) {
            const QAccessibleInterface& child = *object.child(number);
            if (child.role() == QAccessible::StaticText) {
                labels << child.text(QAccessible::Name);
                EXPECT_EQ(child.childCount(), 0);
            }
            collectLabels(child, labels);
        }
    }

    static int dialogs() {
        int count = 0;
        for (const QWidget* const window : QApplication::topLevelWidgets()) {
            count += window->objectName() == "alert" ? 1 : 0;
        }
        return count;
    }

    QtSystemBackend backend_;
};

TEST_F(QtAlertTest, ShowsItsTextsAsTheyAreAndItsButtonsInOrder) {
    const auto alert = alertWith({"feature request", "more & more", "cancel"});
    backend_.user().withNext(0.0, [](QDialog& dialog) {
        const auto* const message = dialog.findChild<AlertText*>("message");
        EXPECT_EQ(message->text(), "A <b>message</b>");
        EXPECT_EQ(message->toPlainText(), "A <b>message</b>");
        EXPECT_TRUE(message->font().bold());
        const auto* const informative = dialog.findChild<AlertText*>("informative");
        EXPECT_EQ(informative->text(), "Information & more.");
        EXPECT_FALSE(informative->font().bold());
        int left = -1;
        for (const char* const name : {"button0", "button1", "button2"}) {
            const auto* const button = dialog.findChild<QPushButton*>(name);
            EXPECT_EQ(button->isDefault(), name == std::string("button0"));
            EXPECT_GT(button->x(), left);
            left = button->x();
        }
        EXPECT_EQ(dialog.findChild<QPushButton*>("button1")->text(), "more && more");
        EXPECT_TRUE(dialog.isModal());
        EXPECT_EQ(dialog.accessibleName(), "A <b>message</b>");
        dialog.reject();
    });
    EXPECT_EQ(alert->runModal(), 1002);
}

TEST_F(QtAlertTest, ANameWithoutASpaceStaysOnTheScreenWithItsButtons) {
    const std::string name(255, 'W');
    showsWithinScreen("The folder '/" + name + "' cannot be read.", "/home/" + name, false);
}

TEST_F(QtAlertTest, AVeryDeepPathStaysOnTheScreenAndScrolls) {
    std::string path;
    while (path.size() < 4000) {
        path += "/" + std::string(200, 'W');
    }
    showsWithinScreen("It cannot be read.", path, true);
    showsWithinScreen(path, path, true);
}

TEST_F(QtAlertTest, ItsTextsAreLabelsToAssistivePrograms) {
    const auto alert = alertWith({"Got it"});
    backend_.user().withNext(0.0, [](QDialog& dialog) {
        QStringList labels;
        collectLabels(*QAccessible::queryAccessibleInterface(&dialog), labels);
        labels.removeAll(QString());
        EXPECT_EQ(labels, QStringList({"A <b>message</b>", "Information & more."}));
        dialog.close();
    });
    alert->runModal();
}

TEST_F(QtAlertTest, EscapeAndClosingMeanTheButtonThatCancelsOrTheLastOne) {
    const std::pair<std::vector<const char*>, NSModalResponse> rows[] = {
        {{"Got it"}, 1000},
        {{"Ok", "Cancel"}, 1001},
        {{"Ok", "cancel", "Other"}, 1001},
        {{"One", "Two", "Three"}, 1002}};
    for (const auto& [titles, response] : rows) {
        backend_.user().withNext(0.0, [](QDialog& dialog) { pressKey(dialog, Qt::Key_Escape); });
        EXPECT_EQ(alertWith(titles)->runModal(), response) << titles.back();
        backend_.user().withNext(0.0, [](QDialog& dialog) { dialog.close(); });
        EXPECT_EQ(alertWith(titles)->runModal(), response) << titles.back();
    }
}

TEST_F(QtAlertTest, ConsecutiveAlertsLeaveNoDialogBehind) {
    for (int times = 0; times < 20; ++times) {
        backend_.confirmNextAlert(0.0);
        runBeside();
        EXPECT_LE(dialogs(), 1);
    }
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(dialogs(), 0);
}

TEST_F(QtAlertTest, OverAnOpenPanelItBelongsToThatAndCanBeAnswered) {
    QtOpenPanel panel(backend_.dialogRules());
    NSModalResponse response = -1;
    QTimer::singleShot(0, [&] {
        QWidget* const open = QApplication::activeModalWidget();
        ASSERT_NE(open, nullptr);
        ASSERT_EQ(open->objectName(), "openPanel");
        backend_.user().withNext(0.0, [open](QDialog& dialog) {
            EXPECT_EQ(dialog.parentWidget(), open);
            EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
            dialog.findChild<QPushButton*>("button0")->click();
        });
        response = alertWith({"Got it"})->runModal();
        EXPECT_EQ(QApplication::activeModalWidget(), open);
        static_cast<QDialog*>(open)->reject();
    });
    EXPECT_EQ(panel.runModal(), NSModalResponseCancel);
    EXPECT_EQ(response, 1000);
}

TEST_F(QtAlertTest, OnAnotherThreadItWaitsUntilNoDialogIsModal) {
    const auto running = std::make_shared<std::atomic<bool>>(false);
    const auto ended = std::make_shared<std::atomic<bool>>(false);
    const auto beside = backend_.foundation().threadWithEntry([this, running, ended] {
        const auto alert = alertWith({"Beside"});
        *running = true;
        alert->runModal();
        *ended = true;
    });
    for (const bool isFirst : {true, false}) {
        const auto modal = alertWith({"Modal"});
        backend_.user().withNext(0.0, [&](QDialog& dialog) {
            if (isFirst) {
                beside->start();
            }
            contract::runUntil(backend_.foundation(), [running] { return running->load(); });
            backend_.foundation().currentRunLoop().runUntilDate(
                backend_.foundation().dateWithTimeIntervalSinceNow(0.1));
            EXPECT_EQ(dialogs(), 1);
            EXPECT_FALSE(*ended);
            dialog.reject();
        });
        modal->runModal();
    }
    backend_.user().withNext(0.0, [](QDialog& dialog) {
        EXPECT_FALSE(dialog.isModal());
        EXPECT_EQ(dialog.findChild<QPushButton*>("button0")->text(), "Beside");
        dialog.close();
    });
    ASSERT_TRUE(contract::runUntil(backend_.foundation(), [ended] { return ended->load(); }));
}

TEST_F(QtAlertTest, AnErrorsAlertShowsItsTextAndItsCode) {
    const auto alert = backend_.alertWithError({"NSPOSIXErrorDomain", 28, "The disk is full."});
    backend_.user().withNext(0.0, [](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<AlertText*>("message")->text(), "The disk is full.");
        EXPECT_EQ(dialog.findChild<AlertText*>("informative")->text(),
                  "NSPOSIXErrorDomain error 28");
        dialog.close();
    });
    EXPECT_EQ(alert->runModal(), 1000);
}

} // namespace
} // namespace vistrane
