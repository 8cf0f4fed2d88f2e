// pictures_of_the_window FOLDER [SCALE]: draws the windows into picture files, for people to look
// at: in their minimum and a larger size, light, dark, and from right to left. SCALE is the number
// of pixels per point.

#include <cstdio>
#include <memory>
#include <string>

#include <QApplication>
#include <QDir>
#include <QLinearGradient>
#include <QPainter>
#include <QStyleFactory>

#include "backends/qt/controls/PictureWidget.h"
#include "backends/qt/controls/QtInterface.h"
#include "backends/qt/system/Appearance.h"
#include "platform/appkit/NSSliderCell.h"

namespace vistrane {
namespace {

struct Look {
    const char* name;
    QSize size;
    bool isDark = false;
    bool isReversed = false;
    bool isFirstStart = false;
};

constexpr Look looks[] = {
    {"first-900x600", {900, 600}, false, false, true},
    {"light-900x600", {900, 600}},
    {"dark-900x600", {900, 600}, true},
    {"reversed-900x600", {900, 600}, false, true},
    {"light-1600x1000", {1600, 1000}},
    {"dark-1600x1000", {1600, 1000}, true},
};

/// Draws the knob as the program does.
class PictureKnob final : public NSSliderCell {
public:
    explicit PictureKnob(const QtResources& resources) : resources_(resources) {}
    void awakeFromNib() override { knob_ = resources_.imageNamed("12"); }
    NSRect rectOfTickMarkAtIndex(NSInteger) override { return NSZeroRect; }
    void drawKnob(NSRect knobRect) override {
        if (knob_) {
            knob_->drawInRect(knobRect, NSZeroRect, NSCompositingOperationSourceOver, 1.0);
        }
    }

private:
    const QtResources& resources_;
    std::shared_ptr<NSImage> knob_;
};

/// A picture of the camera: an evening by the sea.
QImage scene() {
    QImage picture(1280, 720, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, 720);
    sky.setColorAt(0.0, QColor(28, 52, 110));
    sky.setColorAt(0.55, QColor(240, 150, 90));
    sky.setColorAt(0.6, QColor(30, 70, 110));
    sky.setColorAt(1.0, QColor(10, 24, 48));
    painter.fillRect(picture.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 236, 190));
    painter.drawEllipse(QPointF(820, 360), 58, 58);
    return picture;
}

template <typename Control>
std::shared_ptr<Control> control(QtInterface& interface, const char* name,
                                 const char* object = "AppDelegate") {
    std::shared_ptr<Control> field;
    interface.nib(object).outlet(name, field);
    return field;
}

void useInterface(QtInterface& interface, const QtResources& resources, const Look& look) {
    interface.nib("AppDelegate").sliderCell("hidenSlidercell", [&] {
        return std::make_shared<PictureKnob>(resources);
    });
    for (const char* name : {"previewView", "myDisplay"}) {
        const auto view = control<NSView>(interface, name);
        view->setWantsLayer(true);
        view->layer()->setBackgroundColor(CGColorGetConstantColor(kCGColorBlack));
    }
    const bool isDark = look.isDark;
    const auto play = control<NSButton>(interface, "previewPlayButton");
    play->setImage(resources.imageNamed(isDark ? "play1" : "play2"));
    play->setAlternateImage(resources.imageNamed(isDark ? "play2" : "play1"));
    control<NSTextField>(interface, "sInput")->setIntValue(5);
    control<NSSlider>(interface, "fpsS")->setIntegerValue(30);
    control<NSTextField>(interface, "fpsD")->setStringValue("( fps = 30 )");
    control<NSPopUpButton>(interface, "AVDevicePopUp")->addItemWithTitle("Demo Camera");
    if (look.isFirstStart) {
        return;
    }
    control<NSButton>(interface, "startB")->setTitle("Stop Auto Capture");
    control<NSButton>(interface, "outfolderB")
        ->setTitle("/home/mina/Pictures/Time lapse/2026/Harbour in the evening/frames");
    const auto frames = control<NSSlider>(interface, "photoSlider");
    frames->setMaxValue(239.0);
    frames->setIntegerValue(99);
    control<NSTextField>(interface, "currentS")->setStringValue("Displaying frame 100 of 240");
    const auto progress = control<NSProgressIndicator>(interface, "progressBar");
    progress->setMaxValue(240.0);
    progress->setDoubleValue(90.0);
    for (const char* name : {"previewView", "myDisplay"}) {
        interface.mainWindow().findChild<PictureWidget*>(name)->setFrame(scene());
    }
}

void useTips(QtInterface& interface, const QtResources& resources) {
    const char* const panel = "mantisQRXpanel";
    control<NSImageView>(interface, "tipImage", panel)->setImage(resources.imageNamed("tip2.png"));
    control<NSTextField>(interface, "picCount", panel)->setStringValue("3 of 4");
    control<NSTextField>(interface, "tipText", panel)
        ->setStringValue(
            "3. FPS adjust slider controls the FPS rate of both the preview video and the final "
            "generated movie.\n4. compiling the final movie would take some time and the process "
            "can NOT be terminated if the resolution of each frame image is too high, please be "
            "sure to use the auto preview function (5) or simply manually slide the preview bar "
            "before the final movie compiling.");
    control<NSTextField>(interface, "versionLabel", panel)->setStringValue("Vistrane v0.1.0");
}

void save(QWidget& window, const QString& path) {
    window.show();
    QApplication::processEvents();
    if (!window.grab().save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    }
    window.hide();
}

void draw(const Look& look, const QString& folder) {
    applyPalette(look.isDark);
    QApplication::setLayoutDirection(look.isReversed ? Qt::RightToLeft : Qt::LeftToRight);
    const QtResources resources;
    QtInterface interface(resources);
    useInterface(interface, resources, look);
    useTips(interface, resources);
    QWidget& window = interface.mainWindow();
    window.resize(look.size);
    const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1"));
    const QString ending = QStringLiteral("-%1@%2x.png").arg(QString::fromUtf8(look.name), scale);
    save(window, folder + QStringLiteral("/window") + ending);
    for (QWidget* small : interface.windows()) {
        if (small != &window) {
            save(*small, folder + u'/' + small->objectName() + ending);
        }
    }
}

} // namespace
} // namespace vistrane

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: pictures_of_the_window FOLDER [SCALE]\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", argc == 3 ? argv[2] : "1");
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QApplication application(argc, argv);
    QDir().mkpath(folder);
    for (const vistrane::Look& look : vistrane::looks) {
        vistrane::draw(look, folder);
    }
    return 0;
}
