#include "backends/qt/controls/QtInterface.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QShortcut>

#include "backends/qt/controls/HeldKeys.h"
#include "backends/qt/controls/PathButton.h"
#include "backends/qt/controls/PictureButton.h"
#include "backends/qt/controls/QtButton.h"
#include "backends/qt/controls/QtImage.h"
#include "backends/qt/controls/QtImageView.h"
#include "backends/qt/controls/QtPopUpButton.h"
#include "backends/qt/controls/QtProgressIndicator.h"
#include "backends/qt/controls/QtSlider.h"
#include "backends/qt/controls/QtTextField.h"
#include "backends/qt/controls/QtWindow.h"
#include "backends/qt/menus/QtMenu.h"
#include "backends/qt/menus/QtMenuItem.h"
#include "platform/NibTables.h"

#include "ui_autostart_view.h"
#include "ui_info_panel.h"
#include "ui_main_window.h"
#include "ui_tips_window.h"

namespace vistrane {

namespace {

constexpr char controllerName[] = "AppDelegate";
constexpr char panelName[] = "mantisQRXpanel";

/// The interface files from the view of one object.
class QtNib final : public NibTables {
public:
    /// Adds a slider that is drawn by a cell of that class.
    void addCellSlider(const std::string& className, std::shared_ptr<QtSlider> slider) {
        cellSliders_.emplace(className, std::move(slider));
    }

    void sliderCell(const std::string& className,
                    std::function<std::shared_ptr<NSSliderCell>()> make) override {
        const auto [first, last] = cellSliders_.equal_range(className);
        for (auto entry = first; entry != last; ++entry) {
            const std::shared_ptr<NSSliderCell> cell = make();
            cell->awakeFromNib();
            entry->second->setCell(cell);
        }
    }

private:
    std::multimap<std::string, std::shared_ptr<QtSlider>> cellSliders_;
};

/// Keeps a menu item enabled exactly while a button is.
class EnabledFollower final : public QObject {
public:
    EnabledFollower(QAction& item, const QWidget& button) : QObject(&item), item_(item) {
        item_.setEnabled(button.isEnabled());
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::EnabledChange) {
            item_.setEnabled(static_cast<QWidget*>(watched)->isEnabled());
        }
        return QObject::eventFilter(watched, event);
    }

    QAction& item_;
};

/// Calls `function` when a menu item is chosen, unless a dialog is open: a desktop that draws the
/// menu itself does not know that the dialog blocks it.
template <typename Function>
void whenChosen(QAction& item, QObject& receiver, Function function) {
    QObject::connect(&item, &QAction::triggered, &receiver, [function = std::move(function)] {
        if (QApplication::activeModalWidget() == nullptr) {
            function();
        }
    });
}

/// Clicks a button for a Space that nothing else in the window takes: buttons and fields do.
class SpaceKey final : public QObject {
public:
    SpaceKey(QWidget& window, QAbstractButton& button) : QObject(&window), button_(button) {
        window.installEventFilter(this);
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            const auto& key = *static_cast<QKeyEvent*>(event);
            if (key.key() == Qt::Key_Space && key.modifiers() == Qt::NoModifier &&
                !key.isAutoRepeat()) {
                button_.click();
                return true;
            }
        }
        return QObject::eventFilter(watched, event);
    }

    QAbstractButton& button_;
};

/// Centres a window on the main window when it is first shown, within the screen.
class FirstPlace final : public QObject {
public:
    FirstPlace(QWidget& window, const QWidget& mainWindow)
        : QObject(&window), window_(window), mainWindow_(mainWindow) {
        window.installEventFilter(this);
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show && mainWindow_.isVisible()) {
            window_.removeEventFilter(this);
            place();
        }
        return QObject::eventFilter(watched, event);
    }

    void place() {
        const QRect room = mainWindow_.screen()->availableGeometry();
        window_.resize(window_.size().boundedTo(room.size() - QtInterface::frameAllowance));
        QRect place = window_.rect();
        place.moveCenter(mainWindow_.geometry().center());
        place.moveRight(std::min(place.right(), room.right()));
        place.moveBottom(std::min(place.bottom(), room.bottom()));
        window_.move(std::max(place.left(), room.left()), std::max(place.top(), room.top()));
    }

    QWidget& window_;
    const QWidget& mainWindow_;
};

} // namespace

/// The widgets as the files describe them.
class QtInterface::Windows {
public:
    Windows();

    QMainWindow mainWindow;
    // Not children of the main window, because a window manager would hide and show them together.
    QWidget infoPanel;
    QWidget tipsWindow;
    QWidget autostartForm;
    QMenu statusMenu;
    QMenu contextMenu;
    QAction* statusSubmenuItem = nullptr;
    QAction* contextSubmenuItem = nullptr;
    SignWidget* sign = nullptr;
    MessageBar* messageBar = nullptr;

private:
    void fillMenus();

    Ui::MainWindow mainFile_;
    Ui::InfoPanel infoFile_;
    Ui::TipsWindow tipsFile_;
    Ui::AutostartView autostartFile_;
};

QtInterface::Windows::Windows() {
    mainFile_.setupUi(&mainWindow);
    sign = new SignWidget(mainWindow);
    messageBar = new MessageBar(mainWindow);
    infoFile_.setupUi(&infoPanel);
    tipsFile_.setupUi(&tipsWindow);
    autostartFile_.setupUi(&autostartForm);
    for (QWidget* window : {&infoPanel, &tipsWindow}) {
        auto* const escape = new QShortcut(QKeySequence(Qt::Key_Escape), window);
        QObject::connect(escape, &QShortcut::activated, window, &QWidget::close);
        new FirstPlace(*window, mainWindow);
    }
    for (QWidget* window : {static_cast<QWidget*>(&mainWindow), &infoPanel, &tipsWindow}) {
        new HeldKeys(*window);
    }
    new SpaceKey(mainWindow, *mainFile_.previewPlayButton);
    fillMenus();
}

void QtInterface::Windows::fillMenus() {
    const QString submenuTitle = mainFile_.mantisSubmenuM->text();
    for (QAction* item : mainWindow.findChildren<QAction*>()) {
        if (item->property("inStatusMenu").toBool()) {
            statusMenu.addAction(item);
        }
        if (item->property("inContextMenu").toBool()) {
            contextMenu.addAction(item);
        }
    }
    statusSubmenuItem = statusMenu.addAction(submenuTitle);
    statusMenu.addSeparator();
    statusMenu.addAction(mainFile_.quitItem);
    contextMenu.addSeparator();
    contextSubmenuItem = contextMenu.addAction(submenuTitle);

    // Queued, because quitting from a nested loop must end that loop first.
    QObject::connect(mainFile_.quitItem, &QAction::triggered, qApp, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    QWidget* const central = mainFile_.centralWidget;
    central->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(
        central, &QWidget::customContextMenuRequested, central,
        [this, central](const QPoint& place) { contextMenu.popup(central->mapToGlobal(place)); });
}

/// Creates the controls of the widgets and connects them with the objects.
class QtInterface::Connector {
public:
    Connector(Windows& windows, const QtResources& resources);

    QtNib& nib(const std::string& objectName) { return nibs_.at(objectName); }
    void setSmallWindowsHeldBack(bool areHeldBack);

private:
    void addForm(QtNib& nib, QWidget& root);
    void addWidget(QtNib& nib, QWidget& widget, QtWindow& window);
    void addSlider(QtNib& nib, SliderWidget& widget);
    void addView(QtNib& nib, PictureWidget& widget);
    void addMenus();
    void addMenuAction(QAction& item);
    template <typename Control>
    void add(QtNib& nib, QWidget& widget, std::shared_ptr<Control> control);
    void addSender(const QObject& widget, const QtNib::Connection& connect);

    Windows& windows_;
    const QtResources& resources_;
    std::map<std::string, QtNib> nibs_;
    std::map<std::string, std::shared_ptr<QtWindow>> controlWindows_;
};

QtInterface::Connector::Connector(Windows& windows, const QtResources& resources)
    : windows_(windows), resources_(resources) {
    QtNib& controller = nibs_[controllerName];
    QtNib& panel = nibs_[panelName];
    addForm(controller, windows.mainWindow);
    addForm(panel, windows.infoPanel);
    addForm(panel, windows.tipsWindow);
    addForm(panel, windows.autostartForm);
    // The panel puts the version into the main window's title.
    panel.addOutlet("myWindow", controlWindows_.at("myWindow"));
    addMenus();
}

void QtInterface::Connector::addForm(QtNib& nib, QWidget& root) {
    const std::string name = root.objectName().toStdString();
    const auto window = std::make_shared<QtWindow>(root);
    controlWindows_[name] = window;
    nib.addOutlet(name, window);
    for (QWidget* widget : root.findChildren<QWidget*>()) {
        // Windows inside this one are separate forms.
        if (!widget->objectName().isEmpty() && widget->window() == &root) {
            addWidget(nib, *widget, *window);
        }
    }
    const QString delegate = root.property("delegate").toString();
    if (!delegate.isEmpty()) {
        nibs_.at(delegate.toStdString())
            .addSender("windowWillClose:",
                       [window](const NSAction& action) { window->setWillCloseAction(action); });
    }
}

void QtInterface::Connector::addWidget(QtNib& nib, QWidget& widget, QtWindow& window) {
    if (auto* const slider = dynamic_cast<SliderWidget*>(&widget)) {
        addSlider(nib, *slider);
    } else if (auto* const picture = dynamic_cast<PictureWidget*>(&widget)) {
        addView(nib, *picture);
    } else if (auto* const popUp = dynamic_cast<PopUpWidget*>(&widget)) {
        add(nib, widget, std::make_shared<QtPopUpButton>(*popUp));
    } else if (auto* const button = dynamic_cast<QAbstractButton*>(&widget)) {
        add(nib, widget, std::make_shared<QtButton>(*button));
    } else if (auto* const line = dynamic_cast<QLineEdit*>(&widget)) {
        const auto field = std::make_shared<QtTextField>(*line);
        window.addField(field);
        add(nib, widget, field);
    } else if (auto* const label = dynamic_cast<QLabel*>(&widget)) {
        nib.addOutlet(widget.objectName().toStdString(), std::make_shared<QtLabel>(*label));
    } else if (auto* const bar = dynamic_cast<QProgressBar*>(&widget)) {
        nib.addOutlet(widget.objectName().toStdString(),
                      std::make_shared<QtProgressIndicator>(*bar));
    }
}

void QtInterface::Connector::addSlider(QtNib& nib, SliderWidget& widget) {
    const auto slider = std::make_shared<QtSlider>(widget);
    add(nib, widget, slider);
    const QString cellClass = widget.property("cellClass").toString();
    if (!cellClass.isEmpty()) {
        nib.addCellSlider(cellClass.toStdString(), slider);
    }
}

void QtInterface::Connector::addView(QtNib& nib, PictureWidget& widget) {
    const auto view = std::make_shared<QtImageView>(widget);
    const QString image = widget.property("image").toString();
    if (!image.isEmpty()) {
        view->setImage(resources_.imageNamed(image.toStdString()));
    }
    nib.addOutlet(widget.objectName().toStdString(), view);
}

template <typename Control>
void QtInterface::Connector::add(QtNib& nib, QWidget& widget, std::shared_ptr<Control> control) {
    nib.addOutlet(widget.objectName().toStdString(), control);
    addSender(widget, [control](const NSAction& action) { control->setAction(action); });
}

void QtInterface::Connector::addSender(const QObject& widget, const QtNib::Connection& connect) {
    const QString selector = widget.property("action").toString();
    if (selector.isEmpty()) {
        return;
    }
    // The object that has the action receives it.
    for (auto& [name, nib] : nibs_) {
        nib.addSender(selector.toStdString(), connect);
    }
}

void QtInterface::Connector::addMenus() {
    for (QAction* item : windows_.mainWindow.findChildren<QAction*>()) {
        addMenuAction(*item);
    }
    const auto itemOf = [](QAction& item) { return std::make_shared<QtMenuItem>(item, iconOf); };
    auto* const menuItem = windows_.mainWindow.findChild<QAction*>("mantisSubmenuM");
    QtNib& panel = nibs_.at(panelName);
    panel.addOutlet("mantisSubmenuM", itemOf(*menuItem));
    panel.addOutlet("mantisSubmenuS", itemOf(*windows_.statusSubmenuItem));
    panel.addOutlet("mantisSubmenuD", itemOf(*windows_.contextSubmenuItem));
    panel.addOutlet("sMenu", std::make_shared<QtMenu>(windows_.statusMenu, iconOf));
}

void QtInterface::Connector::addMenuAction(QAction& item) {
    item.setAutoRepeat(false);
    const QString clicks = item.property("clicks").toString();
    const QString opens = item.property("opens").toString();
    if (!clicks.isEmpty()) {
        auto* const button = windows_.mainWindow.findChild<QAbstractButton*>(clicks);
        button->installEventFilter(new EnabledFollower(item, *button));
        whenChosen(item, *button, [button] { button->click(); });
    } else if (!opens.isEmpty()) {
        const std::shared_ptr<QtWindow> window = controlWindows_.at(opens.toStdString());
        whenChosen(item, window->widget(), [window] { window->makeKeyAndOrderFront(nullptr); });
    }
    addSender(item, [&item](const NSAction& action) {
        // A null sender: no action of the program uses it.
        whenChosen(item, item, [action] { action(nullptr); });
    });
}

void QtInterface::Connector::setSmallWindowsHeldBack(bool areHeldBack) {
    for (const auto& [name, window] : controlWindows_) {
        if (&window->widget() != &windows_.mainWindow) {
            window->setHeldBack(areHeldBack);
        }
    }
}

QtInterface::QtInterface(const QtResources& resources)
    : windows_(std::make_unique<Windows>()),
      connector_(std::make_unique<Connector>(*windows_, resources)) {}

QtInterface::~QtInterface() = default;

NSNib& QtInterface::nib(const std::string& objectName) {
    return connector_->nib(objectName);
}

QWidget& QtInterface::mainWindow() {
    return windows_->mainWindow;
}

MessageBar& QtInterface::messageBar() {
    return *windows_->messageBar;
}

SignWidget& QtInterface::sign() {
    return *windows_->sign;
}

std::vector<QWidget*> QtInterface::windows() {
    return {&windows_->mainWindow, &windows_->infoPanel, &windows_->tipsWindow};
}

void QtInterface::setSmallWindowsHeldBack(bool areHeldBack) {
    connector_->setSmallWindowsHeldBack(areHeldBack);
}

QMenu& QtInterface::statusMenu() {
    return windows_->statusMenu;
}

} // namespace vistrane
