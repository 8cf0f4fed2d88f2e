#include "tests/desktop/DesktopTest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "tests/desktop/play_button.h"

namespace vistrane {

namespace fs = std::filesystem;

namespace {

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \n");
    const std::size_t last = text.find_last_not_of(" \n");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

bool beginsWith(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool isDialog(const Control& control) {
    const std::string role = control.role();
    return role == "dialog" || role == "alert" || role == "alert message";
}

} // namespace

void PrintTo(const ShownAlert& alert, std::ostream* out) {
    *out << '"' << alert.message << "\" / \"" << alert.informative << "\" /";
    for (const std::string& button : alert.buttons) {
        *out << " [" << button << ']';
    }
}

DesktopTest::DesktopTest() = default;

DesktopTest::~DesktopTest() = default;

void DesktopTest::TearDown() {
    if (HasFailure()) {
        keepScreen("failure");
        if (root_ && program_ && !program_->status()) {
            std::cout << outline(*root_);
        }
        std::cout << desktop.logs();
    }
    root_.reset();
    program_.reset();
}

std::string DesktopTest::testName() const {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    std::replace(name.begin(), name.end(), '/', '-');
    return name;
}

void DesktopTest::keepScreen(const std::string& name) {
    char number[16];
    std::snprintf(number, sizeof number, "%02d", ++pictures_);
    fs::create_directories(VISTRANE_SCREENSHOTS);
    writePng(screen().picture(), std::string(VISTRANE_SCREENSHOTS) + "/" + testName() + "-" +
                                     number + "-" + name + ".png");
}

void DesktopTest::launch(const std::vector<std::string>& arguments, const Environment& more) {
    std::vector<std::string> command{VISTRANE_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    root_.reset();
    program_ = desktop.start("vistrane", command, more);
}

void DesktopTest::start(const std::vector<std::string>& arguments, const Environment& more) {
    launch(arguments, more);
    // The window is there before its launch is over, but what is asked of it once it has its title
    // is answered afterwards.
    window();
    root_ = desktop.controlsOf(*program_);
    find("check box", "Lower Quality");
}

void DesktopTest::giveKeysToMainWindow() {
    screen().activate(window());
    const std::string title = window().title;
    await("the main window to take the keys", [&] {
        const auto tops = root_->children();
        return std::any_of(tops.begin(), tops.end(), [&](const Control& top) {
            return top.name() == title && top.is(ControlState::active);
        });
    });
}

int DesktopTest::quit() {
    const Window main = window();
    const auto asked = std::chrono::steady_clock::now();
    screen().close(main);
    const int status = awaitEnd();
    const auto passed = std::chrono::steady_clock::now() - asked;
    std::cout << "ended after "
              << std::chrono::duration_cast<std::chrono::milliseconds>(passed).count() << " ms\n";
    return status;
}

int DesktopTest::awaitEnd() {
    return *await("the program's end", [this] { return program_->status(); });
}

Window DesktopTest::window() {
    return *await("the main window", [this]() -> std::optional<Window> {
        for (const Window& each : screen().windows()) {
            if (each.process == program_->number() && beginsWith(each.title, "Vistrane v")) {
                return each;
            }
        }
        return std::nullopt;
    });
}

std::optional<Window> DesktopTest::windowTitled(const std::string& title) {
    for (const Window& each : screen().windows()) {
        if (each.process == program_->number() && each.title == title) {
            return each;
        }
    }
    return std::nullopt;
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
    return *await("the label \"" + beginning + "...\"", [&] {
        return firstBelow(*root_, [&](const Control& control) {
            return control.role() == "label" && beginsWith(control.name(), beginning) &&
                   control.is(ControlState::showing);
        });
    });
}

Rectangle DesktopTest::settledPlace(const Control& control) {
    return *await("the control's place", [&]() -> std::optional<Rectangle> {
        Control top = control;
        for (auto above = top.parent(); above && !(*above == *root_); above = top.parent()) {
            top = *above;
        }
        // The window manager may just be moving the window, and the program not know it yet.
        const auto windows = screen().windows();
        const bool isSettled = std::any_of(
            windows.begin(), windows.end(), [&, place = top.extents()](const Window& each) {
                return each.process == program_->number() && screen().placeOf(each) == place;
            });
        const Rectangle place = control.extents();
        return isSettled && !place.isEmpty() ? std::optional(place) : std::nullopt;
    });
}

void DesktopTest::click(const Control& control) {
    screen().click(settledPlace(control));
}

void DesktopTest::fill(const std::string& field, const std::string& text) {
    const Control control = find("text", field);
    click(control);
    await("the field to take the keys", [&] { return control.is(ControlState::focused); });
    screen().press({"Control_L", "a"});
    screen().type(text + "\t");
}

void DesktopTest::pickCamera(const std::string& name) {
    const Control box = *await("the camera list", [this] {
        return firstBelow(*root_, [](const Control& control) {
            return control.role() == "combo box" && control.is(ControlState::showing);
        });
    });
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
    const Rectangle place = settledPlace(slider);
    screen().drag(place.x + place.width / 2, place.y + place.height / 2, place.x + 1,
                  place.y + place.height / 2);
    await("the slider to take the keys", [&] { return slider.is(ControlState::focused); });
    screen().press({"Home"});
    const double first =
        await("the slider's beginning", [&] { return std::optional(slider.value()); }).value();
    for (int step = static_cast<int>(first); step < value; ++step) {
        screen().press({"Right"});
    }
    await("the slider's value", [&] { return static_cast<int>(slider.value()) == value; });
}

ShownAlert DesktopTest::alert(const std::string& message) {
    const Control dialog = *await("the alert \"" + message + "\"", [&] {
        return firstBelow(*root_, [&](const Control& control) {
            return isDialog(control) && control.name() == message &&
                   control.is(ControlState::showing);
        });
    });
    ShownAlert shown{message, "", {}};
    for (const Control& text :
         allBelow(dialog, [](const Control& each) { return each.role() == "label"; })) {
        const std::string name = trimmed(text.name());
        if (!name.empty() && name != message) {
            shown.informative += name;
        }
    }
    auto buttons =
        allBelow(dialog, [](const Control& each) { return each.role() == "push button"; });
    // The order of the tree is the order in which they are read out: it has to be that of the eye.
    EXPECT_TRUE(std::is_sorted(buttons.begin(), buttons.end(),
                               [](const Control& first, const Control& second) {
                                   return first.extents().x < second.extents().x;
                               }));
    for (const Control& button : buttons) {
        shown.buttons.push_back(button.name());
    }
    return shown;
}

void DesktopTest::answer(const std::string& message, const std::string& title) {
    const Control dialog = *await("the alert \"" + message + "\"", [&] {
        return firstBelow(*root_, [&](const Control& control) {
            return isDialog(control) && control.name() == message &&
                   control.is(ControlState::showing);
        });
    });
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
    click(field);
    await("the field to take the keys", [&] { return field.is(ControlState::focused); });
    screen().press({"Control_L", "a"});
    screen().type(path);
    await("the path", [&] { return field.text() == path; });
    screen().type("\n");
}

std::optional<std::pair<int, int>> DesktopTest::frameShown() {
    const auto readOut = firstBelow(*root_, [](const Control& control) {
        return control.role() == "label" && beginsWith(control.name(), "Displaying frame ");
    });
    return readOut ? frameNumbers(readOut->name()) : std::nullopt;
}

void DesktopTest::awaitFrame(int number, int count) {
    awaitLabel("Displaying frame " + std::to_string(number) + " of " + std::to_string(count));
}

void DesktopTest::store(const std::map<std::string, std::int64_t>& settings) const {
    std::ostringstream text;
    text << "Vistrane settings 1\n";
    for (const auto& [key, value] : settings) {
        text << '"' << key << "\" = " << value << '\n';
    }
    text << "end\n";
    fs::create_directories(fs::path(settingsFile()).parent_path());
    writeFile(settingsFile(), text.str());
}

std::map<std::string, std::int64_t> DesktopTest::stored() const {
    std::map<std::string, std::int64_t> settings;
    std::istringstream text(contentsOf(settingsFile()));
    for (std::string line; std::getline(text, line);) {
        const std::size_t end = line.find("\" = ");
        if (end != std::string::npos &&
            line.find_first_not_of("-0123456789", end + 4) == std::string::npos) {
            settings[line.substr(1, end - 1)] = std::stoll(line.substr(end + 4));
        }
    }
    return settings;
}

void DesktopTest::storeUsual(std::int64_t rate) const {
    store({{"firstTimeRunning", 1},
           {"iSlow", 0},
           {"iFPS", rate},
           {"iHour", 0},
           {"iMinue", 0},
           {"iMinute", 0},
           {"iSecond", 1},
           {"iTip", 1},
           {"firstTime", 1},
           {"iDock", 1}});
}

void DesktopTest::makeFrames(int count, const FrameForm& form) const {
    for (int number = 1; number <= count; ++number) {
        char name[24];
        std::snprintf(name, sizeof name, "%03d.png", number);
        const std::string path = folder + "/" + name;
        // Noise takes long to make, and none is like another for long enough.
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

bool CameraDesktopTest::camera(const std::string& verb) {
    return runTool({VISTRANE_TESTCAM, verb, "Testcam"},
                   {{{"TESTCAM_SOURCE", "videotestsrc is-live=true pattern=smpte"}}})
               .status == 0;
}

} // namespace vistrane
