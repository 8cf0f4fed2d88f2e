// tip_pictures FOLDER PROGRAM: makes the five pictures of the tips, tip1.png to tip5.png, in
// FOLDER. They show the program itself with its demo camera and a folder of frames, which is in
// $TMPDIR meanwhile. PROGRAM is the program's command line, which makes the movie beside the
// frames.
//
// tip_pictures FOLDER PROGRAM light|dark: makes window-light.png or window-dark.png instead, the
// window on a light or a dark desktop.
//
// The numbers are those of the tips' texts: 1 folder, 2 interval and its total, 3 rate, 4 compile,
// 5 play.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFont>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QListWidget>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPixmap>
#include <QProcess>
#include <QRadialGradient>
#include <QSlider>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include "backends/qt/system/Appearance.h"
#include "frontends/window/open_window.h"

namespace vistrane {
namespace {

/// The size of a picture in points, and its pixels per point.
constexpr QSize pictureSize{680, 420};
constexpr double density = 2.0;
/// The window's size, and its pixels per point: enough to enlarge parts of it.
constexpr QSize windowSize{920, 600};
constexpr double windowDensity = 3.0;

/// The same for pictures of the window alone.
constexpr QSize largeWindowSize{1060, 640};
constexpr double largeWindowDensity = 2.0;

constexpr int frameCount = 24;
const QColor markColour(0xd9, 0x48, 0x2b);
const QString frameFolderName = QStringLiteral("Harbour");

[[noreturn]] void fail(const QString& reason) {
    std::fprintf(stderr, "tip_pictures: %s\n", qPrintable(reason));
    std::_Exit(1);
}

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto mix = [share](double a, double b) { return a + (b - a) * share; };
    return QColor::fromRgbF(static_cast<float>(mix(from.redF(), to.redF())),
                            static_cast<float>(mix(from.greenF(), to.greenF())),
                            static_cast<float>(mix(from.blueF(), to.blueF())));
}

/// A day by the sea, from sunrise, 0, to sunset, 1.
QImage scene(double time) {
    constexpr double pi = 3.14159265358979323846;
    constexpr int width = 1280;
    constexpr int height = 720;
    constexpr int horizon = 470;
    QImage picture(width, height, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double noon = std::sin(pi * time);
    const QPointF sun(110.0 + time * (width - 220.0), horizon - 20.0 - noon * 350.0);

    QLinearGradient sky(0, 0, 0, horizon);
    sky.setColorAt(0.0, mixed(QColor(44, 52, 118), QColor(58, 128, 214), noon));
    sky.setColorAt(0.6, mixed(QColor(150, 84, 150), QColor(132, 190, 240), noon));
    sky.setColorAt(1.0, mixed(QColor(255, 158, 92), QColor(214, 234, 248), noon));
    painter.fillRect(0, 0, width, horizon, sky);
    QRadialGradient glow(sun, 260.0);
    glow.setColorAt(0.0, QColor(255, 240, 190, 200));
    glow.setColorAt(1.0, QColor(255, 220, 150, 0));
    painter.setBrush(glow);
    painter.drawEllipse(sun, 260.0, 260.0);
    painter.setBrush(QColor(255, 248, 220));
    painter.drawEllipse(sun, 44.0, 44.0);

    painter.setBrush(QColor(255, 255, 255, static_cast<int>(90 + 120 * noon)));
    for (int cloud = 0; cloud < 4; ++cloud) {
        const double left = std::fmod(cloud * 370.0 + time * 420.0, width + 300.0) - 150.0;
        const double top = 90.0 + (cloud % 3) * 75.0;
        painter.drawRoundedRect(QRectF(left, top + 18.0, 190.0, 30.0), 15.0, 15.0);
        painter.drawRoundedRect(QRectF(left + 44.0, top, 96.0, 40.0), 20.0, 20.0);
    }

    QLinearGradient sea(0, horizon, 0, height);
    sea.setColorAt(0.0, mixed(QColor(196, 112, 104), QColor(92, 164, 206), noon));
    sea.setColorAt(1.0, mixed(QColor(34, 36, 84), QColor(24, 84, 142), noon));
    painter.fillRect(0, horizon, width, height - horizon, sea);
    painter.setBrush(QColor(255, 236, 190, 120));
    for (int band = 0; band < 9; ++band) {
        const double reach = 26.0 + band * 13.0;
        painter.drawRoundedRect(
            QRectF(sun.x() - reach, horizon + 8.0 + band * 26.0, 2.0 * reach, 6.0), 3.0, 3.0);
    }

    painter.setBrush(mixed(QColor(58, 44, 92), QColor(52, 96, 104), noon));
    QPainterPath hills(QPointF(0, horizon));
    hills.cubicTo(120, 400, 220, 350, 330, 410);
    hills.cubicTo(400, 446, 460, 430, 560, horizon);
    hills.closeSubpath();
    painter.drawPath(hills);
    painter.setBrush(mixed(QColor(40, 30, 66), QColor(60, 66, 80), noon));
    painter.drawRect(980, horizon - 92, 26, 92);
    painter.drawEllipse(QPointF(993, horizon - 96), 19.0, 12.0);
    painter.drawRoundedRect(QRectF(860, horizon - 6, 420, 26), 8.0, 8.0);
    return picture;
}

void saveFrames(const QDir& folder) {
    for (int i = 0; i < frameCount; ++i) {
        const int minutes = 6 * 60 + i * 30;
        const QString name =
            QString::asprintf("26-06-21-%02d-%02d-00.png", minutes / 60, minutes % 60);
        if (!scene(static_cast<double>(i) / (frameCount - 1)).save(folder.filePath(name))) {
            fail(QStringLiteral("cannot write ") + folder.filePath(name));
        }
    }
}

/// A picture as it is drawn, in points.
class Canvas {
public:
    Canvas()
        : image_((QSizeF(pictureSize) * density).toSize(), QImage::Format_ARGB32_Premultiplied) {
        image_.setDevicePixelRatio(density);
        image_.fill(Qt::transparent);
    }

    /// Part of something on a card with round corners and a shadow.
    void drawCard(const QImage& source, const QRectF& part, const QRectF& place) {
        QPainter painter(&image_);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.setBrush(Qt::NoBrush);
        for (int ring = 1; ring <= 5; ++ring) {
            painter.setPen(QPen(QColor(0, 0, 0, 26 - ring * 4), 2.0));
            painter.drawRoundedRect(place.adjusted(-ring, -ring, ring, ring), 8.0 + ring,
                                    8.0 + ring);
        }
        QPainterPath outline;
        outline.addRoundedRect(place, 8.0, 8.0);
        painter.setClipPath(outline);
        const QSize pixels = (place.size() * density).toSize();
        QImage scaled = source.copy(part.toAlignedRect());
        scaled.setDevicePixelRatio(1.0);
        painter.drawImage(place,
                          scaled.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        painter.setClipping(false);
        painter.setPen(QPen(QColor(0x8a, 0x90, 0x9c), 1.0));
        painter.drawPath(outline);
    }

    void drawRing(const QRectF& around) {
        QPainter painter(&image_);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::white, 5.0));
        painter.drawRoundedRect(ringAround(around), 9.0, 9.0);
        painter.setPen(QPen(markColour, 2.5));
        painter.drawRoundedRect(ringAround(around), 9.0, 9.0);
    }

    /// On the ring, not at its left end, where words begin.
    void drawNumber(int number, const QRectF& around, double along) {
        QPainter painter(&image_);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF ring = ringAround(around);
        const QPointF centre(ring.left() + std::max(along * ring.width(), 34.0), ring.top());
        painter.setPen(QPen(Qt::white, 2.0));
        painter.setBrush(markColour);
        painter.drawEllipse(centre, 13.0, 13.0);
        QFont digits;
        digits.setPixelSize(17);
        digits.setBold(true);
        painter.setFont(digits);
        painter.drawText(QRectF(centre - QPointF(13.0, 13.0), QSizeF(26.0, 26.0)), Qt::AlignCenter,
                         QString::number(number));
    }

    void drawArrow(const QPointF& from, const QPointF& to) {
        QPainter painter(&image_);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath curve(from);
        curve.quadTo(QPointF((from.x() + to.x()) / 2.0, std::min(from.y(), to.y()) - 46.0), to);
        const double angle = curve.angleAtPercent(1.0) * 3.14159265358979323846 / 180.0;
        const QPointF along(std::cos(angle), -std::sin(angle));
        const QPointF across(along.y(), -along.x());
        const QPolygonF head{
            {to + along * 10.0, to - along * 8.0 + across * 9.0, to - along * 8.0 - across * 9.0}};
        for (const auto& [colour, width] :
             {std::pair(QColor(Qt::white), 8.0), std::pair(markColour, 4.0)}) {
            painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.setBrush(Qt::NoBrush);
            painter.drawPath(curve);
            painter.setPen(QPen(colour, width / 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.setBrush(colour);
            painter.drawPolygon(head);
        }
    }

    void save(const QString& path) {
        constexpr double dotsPerMetre = 72.0 * density / 0.0254;
        image_.setDotsPerMeterX(static_cast<int>(std::lround(dotsPerMetre)));
        image_.setDotsPerMeterY(static_cast<int>(std::lround(dotsPerMetre)));
        constexpr int smallest = 0;
        if (!image_.save(path, "PNG", smallest)) {
            fail(QStringLiteral("cannot write ") + path);
        }
        std::printf("%s\n", qPrintable(path));
    }

private:
    static QRectF ringAround(const QRectF& control) {
        return control.adjusted(-6.0, -6.0, 6.0, 6.0);
    }

    QImage image_;
};

/// A picture of the main window, and where its controls are.
class WindowPicture {
public:
    explicit WindowPicture(QWidget& window) : window_(window), image_(window.grab().toImage()) {}

    const QImage& image() const { return image_; }

    /// Around all controls of these names, in the window's points.
    QRectF placeOf(const QStringList& names) const {
        QRect place;
        for (const QString& name : names) {
            const auto* const widget = window_.findChild<QWidget*>(name);
            if (widget == nullptr) {
                fail(QStringLiteral("the window has no ") + name);
            }
            place |= QRect(widget->mapTo(&window_, QPoint()), widget->size());
        }
        return place;
    }

    static QRectF inPixels(const QRectF& points) {
        return {points.topLeft() * windowDensity, points.size() * windowDensity};
    }

private:
    QWidget& window_;
    QImage image_;
};

struct Numbered {
    int number;
    QStringList controls;
    /// Where on the ring the number is: a share of its width.
    double along = 0.8;
};

const Numbered folderMark{1, {"outfolderB"}};
const Numbered intervalMark{2, {"hInput", "sLabel", "timeD"}};
const Numbered rateMark{3, {"fpsS", "fpsD"}, 0.7};
const Numbered compileMark{4, {"compilingB"}};
const Numbered playMark{5, {"previewPlayButton"}};

/// Part of the window, as large as the picture lets it be, with numbers.
void drawWindow(Canvas& canvas, const WindowPicture& window, const QRectF& part,
                const std::vector<Numbered>& marks) {
    constexpr double margin = 8.0;
    const QRectF room =
        QRectF(QPointF(), QSizeF(pictureSize)).adjusted(margin, margin, -margin, -margin);
    QRectF place(QPointF(), part.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveCenter(room.center());
    canvas.drawCard(window.image(), WindowPicture::inPixels(part), place);
    const double scale = place.width() / part.width();
    const auto around = [&](const Numbered& mark) {
        const QRectF control = window.placeOf(mark.controls);
        return QRectF(place.topLeft() + (control.topLeft() - part.topLeft()) * scale,
                      control.size() * scale);
    };
    for (const Numbered& mark : marks) {
        canvas.drawRing(around(mark));
    }
    for (const Numbered& mark : marks) {
        canvas.drawNumber(mark.number, around(mark), mark.along);
    }
}

QIcon movieIcon() {
    QPixmap film(450, 252);
    film.fill(QColor(0x2a, 0x2e, 0x38));
    QPainter painter(&film);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.drawImage(QRect(0, 36, 450, 180), scene(0.9), QRect(0, 100, 1280, 512));
    painter.setBrush(QColor(0xe8, 0xea, 0xf0));
    for (int hole = 0; hole < 10; ++hole) {
        painter.drawRoundedRect(QRectF(12.0 + hole * 44.0, 9.0, 26.0, 18.0), 4.0, 4.0);
        painter.drawRoundedRect(QRectF(12.0 + hole * 44.0, 225.0, 26.0, 18.0), 4.0, 4.0);
    }
    painter.setBrush(QColor(255, 255, 255, 225));
    painter.drawPolygon(QPolygonF{{QPointF(195, 82), QPointF(195, 170), QPointF(275, 126)}});
    return film;
}

/// The folder as a file manager shows it: the movie, and as many frames as there is room for.
QImage folderPicture(const QDir& folder, QSize size) {
    QWidget window;
    auto* const layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* const title = new QLabel(folder.dirName());
    title->setAlignment(Qt::AlignCenter);
    title->setFixedHeight(26);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    layout->addWidget(title);
    auto& list = *new QListWidget;
    layout->addWidget(&list);
    list.setViewMode(QListView::IconMode);
    list.setIconSize({112, 63});
    list.setGridSize({131, 84});
    list.setFrameShape(QFrame::NoFrame);
    list.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QFont small = list.font();
    small.setPixelSize(10);
    list.setFont(small);
    for (const QString& name : folder.entryList({"*.mov"}, QDir::Files)) {
        new QListWidgetItem(movieIcon(), name, &list);
    }
    for (const QString& name : folder.entryList({"*.png"}, QDir::Files, QDir::Name)) {
        const QPixmap frame(folder.filePath(name));
        new QListWidgetItem(frame.scaledToWidth(450, Qt::SmoothTransformation), name, &list);
    }
    window.resize(size);
    return window.grab().toImage();
}

/// Uses the program as a user does, within its event loop.
class Photographer {
public:
    /// With an empty look it makes the pictures of the tips, otherwise that of the window.
    Photographer(const QDir& frames, const QDir& pictures, const QString& windowLook)
        : frames_(frames), pictures_(pictures), windowLook_(windowLook) {}

    [[noreturn]] void work() {
        waitFor("the window", [this] { return isOpen(); });
        pickCamera();
        waitFor("the camera's picture", [this] { return cameraIsSeen(); });
        setUp();
        waitFor("the read-outs", [this] {
            return text("timeD") == QLatin1String("( t = 90 s )") &&
                   text("fpsD") == QLatin1String("( fps = 24 )") &&
                   text("currentS") == QLatin1String("Displaying frame 16 of 24");
        });
        takePictures();
        frames_.cdUp();
        frames_.removeRecursively();
        std::fflush(stdout);
        std::_Exit(0);
    }

private:
    template <typename Condition>
    static void waitFor(const char* what, Condition condition) {
        constexpr int timeoutMilliseconds = 60000;
        if (!QTest::qWaitFor(condition, timeoutMilliseconds)) {
            fail(QStringLiteral("timed out waiting for ") + QLatin1String(what));
        }
    }

    template <typename Widget>
    Widget& find(const char* name) const {
        auto* const widget = window_->findChild<Widget*>(QString::fromLatin1(name));
        if (widget == nullptr) {
            fail(QStringLiteral("the window has no %1").arg(QString::fromLatin1(name)));
        }
        return *widget;
    }

    QString text(const char* name) const { return find<QWidget>(name).property("text").toString(); }

    bool isOpen() {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == QLatin1String("myWindow") && widget->isVisible()) {
                window_ = widget;
            }
        }
        return window_ != nullptr && text("currentS").contains(QString::number(frameCount));
    }

    void pickCamera() {
        // The tips are in front; fields keep their selection until they lose the focus.
        window_->activateWindow();
        window_->resize(windowLook_.isEmpty() ? windowSize : largeWindowSize);
        auto& cameras = find<QComboBox>("AVDevicePopUp");
        const int demo = cameras.findText(QStringLiteral("Demo Camera"));
        if (demo < 0) {
            fail(QStringLiteral("there is no demo camera"));
        }
        cameras.setCurrentIndex(demo);
        emit cameras.activated(demo);
    }

    /// The view shows more than its black background.
    bool cameraIsSeen() const {
        const QImage seen = find<QWidget>("previewView").grab().toImage().scaled(8, 8);
        for (int x = 0; x < seen.width(); ++x) {
            if (qGray(seen.pixel(x, seen.height() / 2)) > 40) {
                return true;
            }
        }
        return false;
    }

    void type(const char* field, const QString& number) const {
        auto& input = find<QLineEdit>(field);
        input.setFocus();
        input.selectAll();
        QTest::keyClicks(&input, number);
        QTest::keyClick(&input, Qt::Key_Return);
    }

    void setUp() const {
        // The colours of a desktop, which is missing here.
        if (!windowLook_.isEmpty()) {
            QApplication::setPalette(ownPalette(windowLook_ == QLatin1String("dark")));
        }
        type("hInput", QStringLiteral("0"));
        type("mInput", QStringLiteral("1"));
        type("sInput", QStringLiteral("30"));
        find<QSlider>("photoSlider").setValue(15);
        find<QSlider>("fpsS").setValue(24);
        find<QAbstractButton>("oneB").setFocus();
    }

    void takePictures() const {
        find<QAbstractButton>("oneB").clearFocus();
        if (windowLook_.isEmpty()) {
            takeTips();
        } else {
            takeWindow();
        }
    }

    void takeWindow() const {
        const QString path = pictures_.filePath(QStringLiteral("window-%1.png").arg(windowLook_));
        constexpr int smallest = 0;
        if (!window_->grab()
                 .toImage()
                 .convertToFormat(QImage::Format_RGB32)
                 .save(path, "PNG", smallest)) {
            fail(QStringLiteral("cannot write ") + path);
        }
        std::printf("%s\n", qPrintable(path));
    }

    void takeTips() const {
        const WindowPicture window(*window_);
        const QRectF whole{QPointF(), QSizeF(windowSize)};
        const QSizeF enlarged(448.0,
                              448.0 * (pictureSize.height() - 16.0) / (pictureSize.width() - 16.0));
        const auto part = [&](const QStringList& controls) {
            QRectF result(QPointF(), enlarged);
            result.moveCenter(window.placeOf(controls).center());
            result.moveBottom(windowSize.height());
            return result;
        };
        take(1, [&](Canvas& canvas) {
            drawWindow(canvas, window, whole,
                       {folderMark, intervalMark, rateMark, compileMark, playMark});
        });
        take(2, [&](Canvas& canvas) {
            drawWindow(canvas, window, part({"previewView"}), {folderMark, intervalMark});
        });
        take(3, [&](Canvas& canvas) {
            drawWindow(canvas, window, part({"myDisplay"}), {rateMark, compileMark, playMark});
        });
        take(4, [&](Canvas& canvas) { drawFolder(canvas, window); });
        take(5, [&](Canvas& canvas) { drawWindow(canvas, window, whole, {}); });
    }

    void drawFolder(Canvas& canvas, const WindowPicture& window) const {
        constexpr double scale = 0.66;
        const QSizeF shown(windowSize.width() * scale, windowSize.height() * scale);
        const QRectF place(QPointF(pictureSize.width() - 8.0 - shown.width(), 8.0), shown);
        canvas.drawCard(window.image(),
                        WindowPicture::inPixels(QRectF(QPointF(), QSizeF(windowSize))), place);
        constexpr QSize folderSize{394, 282};
        const QImage folder = folderPicture(frames_, folderSize);
        const QRectF card(QPointF(8.0, pictureSize.height() - 10.0 - folderSize.height()),
                          QSizeF(folderSize));
        canvas.drawCard(folder, QRectF(QPointF(), QSizeF(folder.size())), card);
        const QPointF seen = window.placeOf({"myDisplay"}).center() * scale + place.topLeft();
        canvas.drawArrow({card.right() - 40.0, card.top() + 60.0}, seen);
    }

    template <typename Draw>
    void take(int number, const Draw& draw) const {
        Canvas canvas;
        draw(canvas);
        canvas.save(pictures_.filePath(QStringLiteral("tip%1.png").arg(number)));
    }

    QDir frames_;
    QDir pictures_;
    QString windowLook_;
    QWidget* window_ = nullptr;
};

/// Arguments for `startPhotographer`.
QDir frames;
QDir pictures;
/// Empty for the tips.
QString windowLook;

void startPhotographer() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    // The program takes the desktop's appearance from the initial palette.
    if (!windowLook.isEmpty()) {
        QApplication::setPalette(ownPalette(windowLook == QLatin1String("dark")));
    }
    QTimer::singleShot(0, qApp, [] { Photographer(frames, pictures, windowLook).work(); });
}

/// Makes the folder for the frames, whose path is seen in the pictures, and one for settings.
QDir prepare(const QString& program) {
    const QDir place(QDir::temp().filePath(QStringLiteral("Time Lapse")));
    if (place.exists()) {
        fail(place.path() + QStringLiteral(" is in the way"));
    }
    QDir folder(place.filePath(frameFolderName));
    folder.mkpath(QStringLiteral("."));
    saveFrames(folder);
    if (QProcess::execute(program, {QStringLiteral("compile"), folder.path()}) != 0) {
        fail(QStringLiteral("cannot make the movie"));
    }
    const QDir settings(place.filePath(QStringLiteral(".settings")));
    settings.mkpath(QStringLiteral("."));
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    return folder;
}

} // namespace
} // namespace vistrane

int main(int argc, char** argv) {
    vistrane::windowLook = QString::fromLocal8Bit(argc == 4 ? argv[3] : "");
    const bool isLook = vistrane::windowLook == QLatin1String("light") ||
                        vistrane::windowLook == QLatin1String("dark");
    if (argc != 3 && !(argc == 4 && isLook)) {
        std::fprintf(stderr, "usage: tip_pictures FOLDER PROGRAM [light|dark]\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR",
            QByteArray::number(isLook ? vistrane::largeWindowDensity : vistrane::windowDensity));
    vistrane::pictures = QDir(QString::fromLocal8Bit(argv[1]));
    vistrane::frames = vistrane::prepare(QString::fromLocal8Bit(argv[2]));
    qAddPreRoutine(vistrane::startPhotographer);
    vistrane::WindowOptions options;
    options.version = "0.1.0";
    options.folder = vistrane::frames.path().toStdString();
    options.demoCamera = true;
    vistrane::openWindow(options);
}
