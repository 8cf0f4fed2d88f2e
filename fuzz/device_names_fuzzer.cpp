// Takes any bytes as the names and identifiers of cameras, separated by NUL bytes. What is shown of
// them is one line of valid text, each camera is offered at most once, and the window's list of
// titles is that of the command line.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <QApplication>
#include <QString>

#include "backends/cameras/camera_facts.h"
#include "backends/console/ConsolePopUpButton.h"
#include "backends/qt/controls/PopUpWidget.h"
#include "backends/qt/controls/QtPopUpButton.h"
#include "backends/qt/controls/shown_text.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::string nextText(std::string_view& rest) {
    const std::size_t end = rest.find('\0');
    std::string text(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return text;
}

/// As the lists of cameras and the messages show it.
std::string shownLine(const std::string& text) {
    return shownText(std::string_view(text));
}

/// As many cameras as there are texts for. Identifiers of one letter are often the same.
std::vector<CameraFacts> camerasOf(std::string_view rest) {
    constexpr const char* providers[] = {pipeWireProvider, libcameraProvider, v4l2Provider, "demo"};
    std::vector<CameraFacts> cameras;
    while (!rest.empty() && cameras.size() < 20) {
        const auto first = static_cast<unsigned char>(rest.front());
        rest.remove_prefix(1);
        CameraFacts facts;
        facts.provider = providers[first % 4];
        facts.name = shownLine(nextText(rest));
        facts.identity = nextText(rest) + " " + facts.name;
        facts.instance = std::to_string(cameras.size());
        facts.devicePath = nextText(rest);
        facts.libcameraId = nextText(rest);
        facts.usbId = nextText(rest);
        cameras.push_back(facts);
    }
    return cameras;
}

void tryText(const std::string& text) {
    const std::string shown = "x" + shownLine(text); // Qt removes a byte order mark at the start
    require(shownLine(shown) == shown);
    const QString decoded = QString::fromStdString(shown);
    require(decoded.toStdString() == shown);
    require(std::none_of(decoded.begin(), decoded.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    }));
    const QString onScreen = shownText(text);
    require(withoutMarks(withoutMnemonic(onScreen)) == onScreen);
    require(withoutMarks(withMnemonic(onScreen, u'E')) == onScreen);
}

void tryOffer(const std::vector<CameraFacts>& cameras) {
    const std::vector<std::size_t> offered = offeredOnce(cameras);
    require(offered.empty() == cameras.empty());
    require(std::set<std::size_t>(offered.begin(), offered.end()).size() == offered.size());
    std::set<std::string> paths;
    for (const std::size_t index : offered) {
        require(index < cameras.size());
        const std::string& path = cameras[index].devicePath;
        require(path.empty() || paths.insert(path).second);
        // Nothing has changed, so it is found.
        require(findAgain(cameras[index], {}, cameras) == index);
    }
    for (const CameraFacts& camera : cameras) {
        const std::string usb = usbIdOfLibcamera(camera.libcameraId);
        require(usb.empty() || (usb.size() == 9 && camera.libcameraId.ends_with("-" + usb)));
    }
}

void tryPopUp(const std::vector<CameraFacts>& cameras) {
    PopUpWidget widget;
    QtPopUpButton window(widget);
    ConsolePopUpButton console;
    for (const CameraFacts& camera : cameras) {
        window.addItemWithTitle(camera.name);
        console.addItemWithTitle(camera.name);
        require(window.itemTitles() == console.itemTitles());
        require(window.indexOfSelectedItem() == console.indexOfSelectedItem());
        require(widget.count() == static_cast<int>(window.itemTitles().size()));
        require(widget.itemText(widget.count() - 1) == QString::fromStdString(camera.name));
    }
}

} // namespace

} // namespace vistrane

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static const QApplication application(*count, *arguments);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    vistrane::tryText(bytes);
    const std::vector<vistrane::CameraFacts> cameras = vistrane::camerasOf(bytes);
    vistrane::tryOffer(cameras);
    vistrane::tryPopUp(cameras);
    return 0;
}
