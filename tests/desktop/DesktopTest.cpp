#include "tests/desktop/DesktopTest.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "tests/desktop/play_button.h"

namespace vistrane {

namespace fs = std::filesystem;

namespace {

bool isDialog(const Control& control) {
    const std::string role = control.role();
    return role == "dialog" || role == "alert" || role == "alert message";
}

ControlTest hasRole(const std::string& role) {
    return [role](const Control& control) { return control.role() == role; };
}

/// By its name, which for some views is that of a slider as well.
ControlTest isView(const std::string& name) {
    return [name](const Control& control) {
        return control.name() == name && control.role() != "slider";
    };
}

} // namespace

void PrintTo(const ShownAlert& alert, std::ostream* out) {
    *out << '"' << alert.message << "\" / \"" << alert.informative << "\" /";
    for (const std::string& button : alert.buttons) {
        *out << " [" << button << ']';
    }
}

void DesktopTest::TearDown() {
    const bool isRunning = root_ && program_ && !program_->status();
    if (isRunning && !HasFailure()) {
        EXPECT_EQ(quit(), 0);
    }
    if (HasFailure()) {
        keepScreen("failure");
        if (const auto status = program_ ? program_->status() : std::nullopt) {
            std::cout << "The program has ended with status " << *status << ".\n";
        } else if (root_) {
            std::cout << outline(*root_);
        }
        std::cout << desktop.logs();
    }
    root_.reset();
    program_.reset();
}

void DesktopTest::keepScreen(const std::string& name) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    char beginning[160];
    std::snprintf(beginning, sizeof beginning, "%s.%s-%02d-", test.test_suite_name(), test.name(),
                  ++pictures_);
    fs::create_directories(VISTRANE_SCREENSHOTS);
    const fs::path path = fs::path(VISTRANE_SCREENSHOTS) / (beginning + name + ".png");
    EXPECT_TRUE(screen().picture().save(QString::fromStdString(path.string()))) << path;
}

void DesktopTest::launch(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{VISTRANE_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    root_.reset();
    program_ = desktop.start("vistrane", command);
}

void DesktopTest::start(const std::vector<std::string>& arguments) {
    launch(arguments);
    // The window is shown before the launch is over, but queries that are sent once it has its
    // title are answered afterwards.
    mainWindow();
    root_ = desktop.controlsOf(*program_);
    find("check box", "Lower Quality");
}

void DesktopTest::startWithFrames(int count, std::int64_t rate, const FrameForm& form) {
    makeFrames(count, form);
    storeUsual(rate);
    start({folder});
    awaitFrame(count, count);
}

void DesktopTest::giveKeysToMainWindow() {
    screen().activate(mainWindow());
    const std::string title = mainWindow().title;
    await("the main window to take the keys", [&] {
        const auto tops = root_->children();
        return std::any_of(tops.begin(), tops.end(), [&](const Control& top) {
            return top.name() == title && top.is(ControlState::active);
        });
    });
}

int DesktopTest::quit() {
    screen().close(mainWindow());
    return awaitEnd();
}

int DesktopTest::awaitEnd() {
    return *await("the program's end", [this] { return program_->status(); });
}

Window DesktopTest::mainWindow() {
    return *await("the main window", [this]() -> std::optional<Window> {
        for (const Window& each : screen().windows()) {
            if (each.process == program_->process() && each.title.starts_with("Vistrane v")) {
                return each;
            }
        }
        return std::nullopt;
    });
}

std::optional<Window> DesktopTest::windowTitled(const std::string& title) {
    for (const Window& each : screen().windows()) {
        if (each.process == program_->process() && each.title == title) {
            return each;
        }
    }
    return std::nullopt;
}

Window DesktopTest::tips() {
    return *await("the tips", [this] { return windowTitled("Quick Start Tips"); });
}

Control DesktopTest::findFirst(const std::string& what, const ControlTest& passes) {
    return *await(what, [&] {
        return firstBelow(*root_, [&](const Control& control) {
            return passes(control) && control.is(ControlState::showing);
        });
    });
}

std::optional<Control> DesktopTest::seek(const std::string& role, const std::string& name) {
    return firstBelow(*root_, [&](const Control& control) {
        return control.role() == role && control.name() == name &&
               control.is(ControlState::showing);
    });
}

Control DesktopTest::find(const std::string& role, const std::string& name) {
    return *await("the " + role + " \"" + name + "\"", [&] { return seek(role, name); });
}

Control DesktopTest::labelFrom(const std::string& beginning) {
    return findFirst("the label \"" + beginning + "...\"", [&](const Control& control) {
        return control.role() == "label" && control.name().starts_with(beginning);
    });
}

Control DesktopTest::frameView() {
    return findFirst("the frame's view", isView("Frame"));
}

Control DesktopTest::cameraView() {
    return findFirst("the camera's view", isView("Live camera"));
}

Control DesktopTest::cameraList() {
    return findFirst("the camera list", hasRole("combo box"));
}

Control DesktopTest::progressBar() {
    return findFirst("the progress bar", hasRole("progress bar"));
}

QRect DesktopTest::settledPlace(const Control& control) {
    return *await("the control's place", [&]() -> std::optional<QRect> {
        Control top = control;
        for (auto above = top.parent(); above && !(*above == *root_); above = top.parent()) {
            top = *above;
        }
        // The window manager may have moved the window without the program knowing it yet.
        const auto windows = screen().windows();
        const bool isSettled = std::any_of(
            windows.begin(), windows.end(), [&, place = top.extents()](const Window& each) {
                return each.process == program_->process() && screen().placeOf(each) == place;
            });
        const QRect place = control.extents();
        return isSettled && !place.isEmpty() ? std::optional(place) : std::nullopt;
    });
}

void DesktopTest::click(const Control& control) {
    screen().click(settledPlace(control));
}

void DesktopTest::focus(const Control& control) {
    click(control);
    await("the field to take the keys", [&] { return control.is(ControlState::focused); });
}

void DesktopTest::fill(const std::string& field, const std::string& text) {
    focus(find("text", field));
    screen().press({"Control_L", "a"});
    screen().type(text + "\t");
}

void DesktopTest::pickCamera(const std::string& name) {
    const Control box = cameraList();
    click(box);
    const Control item = *await("the camera " + name, [&]() -> std::optional<Control> {
        const auto list = firstBelow(box, [](const Control& control) {
            return control.role() == "list" && control.is(ControlState::showing);
        });
        return !list ? std::nullopt : firstBelow(*list, [&](const Control& control) {
            return control.role() == "list item" && control.name() == name;
        });
    });
    click(item);
}

void DesktopTest::setSlider(const std::string& name, int value) {
    const Control slider = find("slider", name);
    focus(slider);
    screen().press({"Home"});
    const int first = static_cast<int>(slider.minimum());
    await("the slider's beginning", [&] { return static_cast<int>(slider.value()) == first; });
    for (int step = first; step < value; ++step) {
        screen().press({"Right"});
    }
    await("the slider's value", [&] { return static_cast<int>(slider.value()) == value; });
}

void DesktopTest::dragFrameSliderTo(double part) {
    const QRect place = settledPlace(find("slider", "Frame"));
    const int x = place.x() + 3 + static_cast<int>(part * (place.width() - 6));
    screen().drag({place.right() - 14, place.center().y()}, {x, place.center().y()});
}

Control DesktopTest::dialog(const std::string& message) {
    return findFirst("the alert \"" + message + "\"", [&](const Control& control) {
        return isDialog(control) && control.name() == message;
    });
}

ShownAlert DesktopTest::alert(const std::string& message) {
    const Control dialog = this->dialog(message);
    ShownAlert shown{message, "", {}};
    for (const Control& text : allBelow(dialog, hasRole("label"))) {
        const std::string name = QString::fromStdString(text.name()).trimmed().toStdString();
        if (!name.empty() && name != message) {
            shown.informative += name;
        }
    }
    const auto buttons = allBelow(dialog, hasRole("push button"));
    // The tree's order is the order of reading aloud: it has to be that on the screen.
    EXPECT_TRUE(std::is_sorted(buttons.begin(), buttons.end(),
                               [](const Control& first, const Control& second) {
                                   return first.extents().x() < second.extents().x();
                               }));
    for (const Control& button : buttons) {
        shown.buttons.push_back(button.name());
    }
    return shown;
}

void DesktopTest::answer(const std::string& message, const std::string& title) {
    const Control dialog = this->dialog(message);
    click(*await("the button " + title, [&] {
        return firstBelow(dialog, [&](const Control& each) {
            return each.role() == "push button" && each.name() == title;
        });
    }));
    await("the alert's end", [&] {
        const auto dialogs = root_->children();
        return std::find(dialogs.begin(), dialogs.end(), dialog) == dialogs.end() ||
               !dialog.is(ControlState::showing);
    });
}

void DesktopTest::typeFolder(const std::string& path) {
    find("dialog", "Select Output Folder to Save the Capture");
    const Control field = find("text", "Directory:");
    focus(field);
    screen().press({"Control_L", "a"});
    screen().type(path);
    await("the path", [&] { return field.text() == path; });
    screen().press({"Return"});
}

std::optional<std::pair<int, int>> DesktopTest::frameShown() {
    const auto readOut = firstBelow(*root_, [](const Control& control) {
        return control.role() == "label" && control.name().starts_with("Displaying frame ");
    });
    return readOut ? frameNumbers(readOut->name()) : std::nullopt;
}

void DesktopTest::awaitFrame(int number, int count) {
    awaitLabel("Displaying frame " + std::to_string(number) + " of " + std::to_string(count));
}

std::string DesktopTest::openedMovie() {
    await("the movie in its application", [this] { return !desktop.opened().empty(); });
    return desktop.copyOfOpened(0);
}

void DesktopTest::store(const std::map<std::string, std::int64_t>& settings) const {
    std::ostringstream text;
    text << "[General]\n";
    for (const auto& [key, value] : settings) {
        text << key << '=' << value << '\n';
    }
    fs::create_directories(fs::path(settingsFile()).parent_path());
    writeFile(settingsFile(), text.str());
}

std::map<std::string, std::int64_t> DesktopTest::stored() const {
    std::map<std::string, std::int64_t> settings;
    std::istringstream text(contentsOf(settingsFile()));
    for (std::string line; std::getline(text, line);) {
        const std::size_t end = line.find('=');
        if (end != std::string::npos &&
            line.find_first_not_of("-0123456789", end + 1) == std::string::npos) {
            settings[line.substr(0, end)] = std::stoll(line.substr(end + 1));
        }
    }
    return settings;
}

void DesktopTest::storeUsual(std::int64_t rate,
                             const std::map<std::string, std::int64_t>& more) const {
    std::map<std::string, std::int64_t> settings{
        {"firstTimeRunning", 1}, {"iSlow", 0},   {"iFPS", rate}, {"iHour", 0},     {"iMinue", 0},
        {"iMinute", 0},          {"iSecond", 1}, {"iTip", 1},    {"firstTime", 1}, {"iDock", 1}};
    settings.insert(more.begin(), more.end());
    store(settings);
}

void DesktopTest::makeFrames(int count, const FrameForm& form) const {
    for (int number = 1; number <= count; ++number) {
        char name[24];
        std::snprintf(name, sizeof name, "%03d.png", number);
        const std::string path = folder + "/" + name;
        // Noise takes long to make: two frames of it alternate.
        if (form.isNoise && number > 2) {
            fs::copy_file(folder + "/00" + std::to_string(number % 2 + 1) + ".png", path);
            continue;
        }
        FrameForm frame = form;
        const int grey = 255 * number / (count + 1);
        frame.colour = {grey, 255 - grey, 128};
        writeFrame(path, frame);
    }
}

bool DesktopTest::isLit(const Control& control) {
    const QImage mean =
        pictureOf(control).scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return qGray(mean.pixel(0, 0)) > 20;
}

bool CameraDesktopTest::camera(const std::string& verb) {
    return runTool({VISTRANE_TESTCAM, verb, "Testcam"},
                   {{{"TESTCAM_SOURCE", "videotestsrc is-live=true pattern=smpte"}}})
               .status == 0;
}

} // namespace vistrane
