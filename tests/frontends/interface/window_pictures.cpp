// window_pictures FOLDER PROGRAM PICTURES: takes pictures of the program with its demo camera and a
// folder of frames, which is in $TMPDIR meanwhile, and puts them in FOLDER. PROGRAM is the
// program's command line, which makes the movie beside the frames. PICTURES are one of
//
//     tips                 tip1.png to tip5.png, which the program shows. The numbers are those of
//                          the tips' texts: 1 folder, 2 interval and its total, 3 rate, 4 compile,
//                          5 play.
//     light, dark          window-light.png and window-dark.png, the window on such a desktop
//     sheet                sheet.png and the pictures on it: the screen as users of different
//                          desktops see it, for people who change the window. It is made by one
//                          process for each desktop.
//     review-...           the pictures of one desktop of the sheet

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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
#include <QScreen>
#include <QSlider>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include "backends/qt/controls/SignWidget.h"
#include "backends/qt/system/Appearance.h"
#include "frontends/window/open_window.h"
#include "tests/frontends/interface/DesktopStyle.h"

namespace vistrane {
namespace {

/// The size of a tip's picture in points, and its pixels per point.
constexpr QSizeF tipSize{680.0, 420.0};
constexpr double density = 2.0;

constexpr int frameCount = 24;
constexpr double pi = 3.14159265358979323846;
const QColor markColour(0xd9, 0x48, 0x2b);
const QString frameFolderName = QStringLiteral("Harbour");

[[noreturn]] void fail(const QString& reason) {
    std::fprintf(stderr, "window_pictures: %s\n", qPrintable(reason));
    std::_Exit(1);
}

void save(const QImage& picture, const QString& path) {
    constexpr int smallest = 0;
    if (!picture.save(path, "PNG", smallest)) {
        fail(QStringLiteral("cannot write ") + path);
    }
    std::printf("%s\n", qPrintable(path));
}

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto mix = [share](double a, double b) { return a + (b - a) * share; };
    return QColor::fromRgbF(static_cast<float>(mix(from.redF(), to.redF())),
                            static_cast<float>(mix(from.greenF(), to.greenF())),
                            static_cast<float>(mix(from.blueF(), to.blueF())));
}

/// A day by the sea, from sunrise, 0, to sunset, 1.
QImage scene(double time) {
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

/// The picture of a tip as it is drawn, in points.
class Canvas {
public:
    Canvas() : image_((tipSize * density).toSize(), QImage::Format_ARGB32_Premultiplied) {
        image_.setDevicePixelRatio(density);
        image_.fill(Qt::transparent);
        painter_.begin(&image_);
        painter_.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    }

    /// Part of something, in its pixels, on a card with round corners and a shadow.
    void drawCard(const QImage& source, const QRectF& part, const QRectF& place) {
        painter_.setBrush(Qt::NoBrush);
        for (int ring = 1; ring <= 5; ++ring) {
            painter_.setPen(QPen(QColor(0, 0, 0, 26 - ring * 4), 2.0));
            painter_.drawRoundedRect(place.adjusted(-ring, -ring, ring, ring), 8.0 + ring,
                                     8.0 + ring);
        }
        QPainterPath outline;
        outline.addRoundedRect(place, 8.0, 8.0);
        painter_.setClipPath(outline);
        QImage scaled = source.copy(part.toAlignedRect());
        scaled.setDevicePixelRatio(1.0);
        painter_.drawImage(place, scaled.scaled((place.size() * density).toSize(),
                                                Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        painter_.setClipping(false);
        painter_.setPen(QPen(QColor(0x8a, 0x90, 0x9c), 1.0));
        painter_.drawPath(outline);
    }

    void drawRing(const QRectF& control) {
        painter_.setBrush(Qt::NoBrush);
        for (const auto& [colour, width] :
             {std::pair(QColor(Qt::white), 5.0), std::pair(markColour, 2.5)}) {
            painter_.setPen(QPen(colour, width));
            painter_.drawRoundedRect(ringAround(control), 9.0, 9.0);
        }
    }

    /// On the ring, not at its left end, where words begin.
    void drawNumber(int number, const QRectF& control, double along) {
        const QRectF ring = ringAround(control);
        const QPointF centre(ring.left() + std::max(along * ring.width(), 34.0), ring.top());
        painter_.setPen(QPen(Qt::white, 2.0));
        painter_.setBrush(markColour);
        painter_.drawEllipse(centre, 13.0, 13.0);
        QFont digits = QApplication::font();
        digits.setPixelSize(17);
        digits.setBold(true);
        painter_.setFont(digits);
        painter_.drawText(QRectF(centre - QPointF(13.0, 13.0), QSizeF(26.0, 26.0)), Qt::AlignCenter,
                          QString::number(number));
    }

    void drawArrow(const QPointF& from, const QPointF& to) {
        QPainterPath curve(from);
        curve.quadTo(QPointF((from.x() + to.x()) / 2.0, std::min(from.y(), to.y()) - 46.0), to);
        const double angle = curve.angleAtPercent(1.0) * pi / 180.0;
        const QPointF along(std::cos(angle), -std::sin(angle));
        const QPointF across(along.y(), -along.x());
        const QPolygonF head{
            {to + along * 10.0, to - along * 8.0 + across * 9.0, to - along * 8.0 - across * 9.0}};
        for (const auto& [colour, width] :
             {std::pair(QColor(Qt::white), 8.0), std::pair(markColour, 4.0)}) {
            QPen pen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
            painter_.strokePath(curve, pen);
            pen.setWidthF(width / 2.0);
            painter_.setPen(pen);
            painter_.setBrush(colour);
            painter_.drawPolygon(head);
        }
    }

    QImage finished() {
        painter_.end();
        const auto dotsPerMetre = static_cast<int>(std::lround(72.0 * density / 0.0254));
        image_.setDotsPerMeterX(dotsPerMetre);
        image_.setDotsPerMeterY(dotsPerMetre);
        return image_;
    }

private:
    static QRectF ringAround(const QRectF& control) {
        return control.adjusted(-6.0, -6.0, 6.0, 6.0);
    }

    QImage image_;
    QPainter painter_;
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

enum class Colours { light, dark, highContrast };

/// How the program is started and what is taken of it.
struct Look {
    QString pictures;
    /// Of the window, in points; of the screen, in pixels, in a review.
    QSize size = {};
    /// Pixels per point.
    double density = 1.0;
    Colours colours = Colours::light;
    bool isReversed = false;
    /// The letters' height in pixels; 0 for the usual one.
    int letters = 0;
    bool isFirstStart = false;

    bool isTips() const { return pictures == QLatin1String("tips"); }
    bool isReview() const { return pictures.startsWith(QLatin1String("review-")); }
};

constexpr QSize smallScreen{1024, 600};
constexpr QSize commonScreen{1440, 900};

const Look looks[] = {
    // Enough pixels to enlarge parts of it.
    {.pictures = QStringLiteral("tips"), .size = {920, 600}, .density = 3.0},
    {.pictures = QStringLiteral("light"), .size = {1060, 640}, .density = 2.0},
    {.pictures = QStringLiteral("dark"),
     .size = {1060, 640},
     .density = 2.0,
     .colours = Colours::dark},
    {.pictures = QStringLiteral("review-small"), .size = smallScreen},
    {.pictures = QStringLiteral("review-small-dark"),
     .size = smallScreen,
     .colours = Colours::dark},
    {.pictures = QStringLiteral("review-small-first"), .size = smallScreen, .isFirstStart = true},
    {.pictures = QStringLiteral("review-common"), .size = commonScreen},
    {.pictures = QStringLiteral("review-common-dark"),
     .size = commonScreen,
     .colours = Colours::dark},
    {.pictures = QStringLiteral("review-common-first"), .size = commonScreen, .isFirstStart = true},
    {.pictures = QStringLiteral("review-double"), .size = commonScreen, .density = 2.0},
    {.pictures = QStringLiteral("review-double-dark"),
     .size = commonScreen,
     .density = 2.0,
     .colours = Colours::dark},
    {.pictures = QStringLiteral("review-reversed"), .size = smallScreen, .isReversed = true},
    {.pictures = QStringLiteral("review-contrast"),
     .size = smallScreen,
     .colours = Colours::highContrast},
    {.pictures = QStringLiteral("review-letters"), .size = commonScreen, .letters = 22},
    {.pictures = QStringLiteral("review-letters-first"),
     .size = commonScreen,
     .letters = 22,
     .isFirstStart = true},
};

/// As a desktop for people who see little.
QPalette highContrastPalette() {
    QPalette palette(Qt::white, Qt::black, Qt::white, Qt::darkGray, Qt::lightGray, Qt::white,
                     Qt::white, Qt::black, Qt::black);
    palette.setColor(QPalette::Highlight, Qt::yellow);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::ToolTipBase, Qt::black);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, Qt::white);
    return palette;
}

QPalette paletteOf(Colours colours) {
    return colours == Colours::highContrast ? highContrastPalette()
                                            : ownPalette(colours == Colours::dark);
}

/// Uses the program as a user does, within its event loop.
class Photographer {
public:
    Photographer(const Look& look, const QString& pictures, const QDir& frames)
        : look_(look), pictures_(pictures), frames_(frames) {}

    /// To be called when there is an application, and no window yet.
    void begin() {
        if (look_.isTips()) {
            QApplication::setStyle(QStringLiteral("Fusion"));
        } else {
            DesktopStyle::colours = paletteOf(look_.colours);
            QApplication::setStyle(QStringLiteral("desktop"));
        }
        if (look_.isReversed) {
            QApplication::setLayoutDirection(Qt::RightToLeft);
        }
        if (look_.letters > 0) {
            QFont font = QApplication::font();
            font.setPixelSize(look_.letters);
            QApplication::setFont(font);
        }
        QTimer::singleShot(0, qApp, [this] { work(); });
    }

private:
    [[noreturn]] void work() {
        waitFor("the window", [this] { return isOpen(); });
        if (look_.isReview()) {
            review();
        } else {
            // The tips are in front; fields keep their selection until they lose the focus.
            window_->activateWindow();
            window_->resize(look_.size);
            use();
            // The layout follows the texts.
            QApplication::processEvents();
            if (look_.isTips()) {
                takeTips();
            } else {
                take(*window_, QStringLiteral("window-") + look_.pictures);
            }
        }
        frames_.cdUp();
        frames_.removeRecursively();
        std::fflush(stdout);
        std::_Exit(0);
    }

    template <typename Condition>
    static void waitFor(const char* what, Condition condition) {
        constexpr int timeoutMilliseconds = 60000;
        if (!QTest::qWaitFor(condition, timeoutMilliseconds)) {
            fail(QStringLiteral("timed out waiting for ") + QLatin1String(what));
        }
    }

    template <typename Widget>
    Widget& find(const QString& name) const {
        auto* const widget = window_->findChild<Widget*>(name);
        if (widget == nullptr) {
            fail(QStringLiteral("the window has no ") + name);
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
        return window_ != nullptr &&
               (look_.isFirstStart || text("currentS").contains(QString::number(frameCount)));
    }

    void use() const {
        auto& cameras = find<QComboBox>("AVDevicePopUp");
        const int demo = cameras.findText(QStringLiteral("Demo Camera"));
        if (demo < 0) {
            fail(QStringLiteral("there is no demo camera"));
        }
        cameras.setCurrentIndex(demo);
        emit cameras.activated(demo);
        waitFor("the camera's picture", [this] { return cameraIsSeen(); });
        type("hInput", QStringLiteral("0"));
        type("mInput", QStringLiteral("1"));
        type("sInput", QStringLiteral("30"));
        find<QSlider>("photoSlider").setValue(15);
        find<QSlider>("fpsS").setValue(24);
        find<QAbstractButton>("oneB").setFocus();
        waitFor("the read-outs", [this] {
            return text("timeD") == QLatin1String("( t = 90 s )") &&
                   text("fpsD") == QLatin1String("( fps = 24 )") &&
                   text("currentS") == QLatin1String("Displaying frame 16 of 24");
        });
        find<QAbstractButton>("oneB").clearFocus();
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

    void take(QWidget& window, const QString& name) const {
        save(window.grab().toImage().convertToFormat(QImage::Format_RGB32),
             pictures_.filePath(name + QStringLiteral(".png")));
    }

    void review() const {
        takeScreen(1);
        setSmallWindowsVisible(false);
        if (look_.isFirstStart) {
            takeScreen(2);
        } else {
            window_->activateWindow();
            use();
            takeScreen(2);
            find<QAbstractButton>("compilingB").click();
            waitFor("the movie's message", [this] { return hasLabelFrom("The movie '"); });
            find<QAbstractButton>("startB").click();
            waitFor("a still",
                    [this] { return text("currentS").contains(QString::number(frameCount + 1)); });
            waitFor("the sign", [this] { return hasSign("1 saved"); });
            takeScreen(3);
            QDir().rename(frames_.path(), frames_.path() + u'2');
            find<QAbstractButton>("oneB").click();
            waitFor("the warning", [this] { return hasSign("1 not saved"); });
            QDir().rename(frames_.path() + u'2', frames_.path());
        }
        setSmallWindowsVisible(true);
        takeScreen(look_.isFirstStart ? 3 : 4);
    }

    static void setSmallWindowsVisible(bool areVisible) {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            const QString name = widget->objectName();
            if (name == QLatin1String("tipWindow") || name == QLatin1String("infoPanel")) {
                widget->setVisible(areVisible);
            }
        }
    }

    bool hasLabelFrom(const char* beginning) const {
        const auto labels = window_->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->isVisible() && label->text().startsWith(QLatin1String(beginning));
        });
    }

    bool hasSign(const char* part) const {
        const auto widgets = window_->findChildren<QWidget*>();
        return std::any_of(widgets.begin(), widgets.end(), [&](const QWidget* widget) {
            const auto* const sign = dynamic_cast<const SignWidget*>(widget);
            return sign != nullptr && sign->text().contains(QLatin1String(part));
        });
    }

    /// The screen with its windows. Each has a title bar, as most desktops give it.
    void takeScreen(int number) const {
        constexpr int titleBar = 26;
        QTest::qWait(100); // the layout follows the texts and the letters
        const QScreen& screen = *window_->screen();
        QImage picture(screen.size() * screen.devicePixelRatio(), QImage::Format_RGB32);
        picture.setDevicePixelRatio(screen.devicePixelRatio());
        picture.fill(QColor(0x50, 0x70, 0x80));
        QPainter painter(&picture);
        QList<QWidget*> windows = QApplication::topLevelWidgets();
        std::stable_sort(windows.begin(), windows.end(), [this](QWidget* first, QWidget* second) {
            return first == window_ && second != window_;
        });
        for (QWidget* const window : windows) {
            if (window->isVisible()) {
                const QRect place(window->pos() + QPoint(1, titleBar), window->size());
                painter.fillRect(place.adjusted(-1, -titleBar, 1, 1), Qt::darkBlue);
                painter.setPen(Qt::white);
                painter.drawText(
                    QRect(place.x() + 8, place.y() - titleBar, place.width() - 16, titleBar),
                    Qt::AlignVCenter, window->windowTitle());
                painter.drawPixmap(place.topLeft(), window->grab());
            }
        }
        painter.end();
        picture.setDevicePixelRatio(1.0);
        save(picture,
             pictures_.filePath(QStringLiteral("%1-%2.png").arg(look_.pictures).arg(number)));
    }

    void takeTips() const {
        const QImage window = window_->grab().toImage();
        const QRectF whole{QPointF(), QSizeF(look_.size)};
        const QSizeF enlarged(448.0, 448.0 * (tipSize.height() - 16.0) / (tipSize.width() - 16.0));
        const auto partAround = [&](const char* control) {
            QRectF result(QPointF(), enlarged);
            result.moveCenter(placeOf({control}).center());
            result.moveBottom(look_.size.height());
            return result;
        };
        takeTip(1, window, whole, {folderMark, intervalMark, rateMark, compileMark, playMark});
        takeTip(2, window, partAround("previewView"), {folderMark, intervalMark});
        takeTip(3, window, partAround("myDisplay"), {rateMark, compileMark, playMark});
        takeTipWithFolder(4, window);
        takeTip(5, window, whole, {});
    }

    /// Around all controls of these names, in the window's points.
    QRectF placeOf(const QStringList& names) const {
        QRect place;
        for (const QString& name : names) {
            const auto& widget = find<QWidget>(name);
            place |= QRect(widget.mapTo(window_, QPoint()), widget.size());
        }
        return place;
    }

    QRectF inPixels(const QRectF& points) const {
        return {points.topLeft() * look_.density, points.size() * look_.density};
    }

    /// Part of the window, as large as the picture lets it be, with numbers.
    void takeTip(int tip, const QImage& window, const QRectF& part,
                 const std::vector<Numbered>& marks) const {
        constexpr double margin = 8.0;
        const QRectF room = QRectF(QPointF(), tipSize).adjusted(margin, margin, -margin, -margin);
        QRectF place(QPointF(), part.size().scaled(room.size(), Qt::KeepAspectRatio));
        place.moveCenter(room.center());
        Canvas canvas;
        canvas.drawCard(window, inPixels(part), place);
        const double scale = place.width() / part.width();
        const auto around = [&](const Numbered& mark) {
            const QRectF control = placeOf(mark.controls);
            return QRectF(place.topLeft() + (control.topLeft() - part.topLeft()) * scale,
                          control.size() * scale);
        };
        for (const Numbered& mark : marks) {
            canvas.drawRing(around(mark));
        }
        for (const Numbered& mark : marks) {
            canvas.drawNumber(mark.number, around(mark), mark.along);
        }
        saveTip(tip, canvas);
    }

    void takeTipWithFolder(int tip, const QImage& window) const {
        constexpr double scale = 0.66;
        const QSizeF shown = QSizeF(look_.size) * scale;
        const QRectF place(QPointF(tipSize.width() - 8.0 - shown.width(), 8.0), shown);
        Canvas canvas;
        canvas.drawCard(window, window.rect(), place);
        constexpr QSize folderSize{394, 282};
        const QImage folder = folderPicture(frames_, folderSize);
        const QRectF card(QPointF(8.0, tipSize.height() - 10.0 - folderSize.height()),
                          QSizeF(folderSize));
        canvas.drawCard(folder, folder.rect(), card);
        const QPointF seen = placeOf({"myDisplay"}).center() * scale + place.topLeft();
        canvas.drawArrow({card.right() - 40.0, card.top() + 60.0}, seen);
        saveTip(tip, canvas);
    }

    void saveTip(int tip, Canvas& canvas) const {
        save(canvas.finished(), pictures_.filePath(QStringLiteral("tip%1.png").arg(tip)));
    }

    const Look& look_;
    QDir pictures_;
    QDir frames_;
    QWidget* window_ = nullptr;
};

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
    // Opens movies: nothing is to happen.
    const QString opener = settings.filePath(QStringLiteral("xdg-open"));
    if (!QFile::link(QStringLiteral("/bin/true"), opener)) {
        fail(QStringLiteral("cannot make ") + opener);
    }
    qputenv("PATH", settings.path().toLocal8Bit() + ':' + qgetenv("PATH"));
    return folder;
}

/// Sets the screen of this process, which has no display.
void setScreen(const Look& look, const QDir& frames) {
    qputenv("QT_SCALE_FACTOR", QByteArray::number(look.density));
    QByteArray platform = "offscreen";
    if (look.isReview()) {
        QFile file(frames.filePath(QStringLiteral("../.settings/screen.json")));
        const QByteArray screen =
            QByteArray("{\"screens\": [{\"name\": \"1\", \"x\": 0, \"y\": 0, ") +
            "\"width\": " + QByteArray::number(look.size.width()) +
            ", \"height\": " + QByteArray::number(look.size.height()) + "}]}";
        if (!file.open(QIODevice::WriteOnly) || file.write(screen) != screen.size()) {
            fail(QStringLiteral("cannot write ") + file.fileName());
        }
        platform += ":configfile=" + QFileInfo(file).canonicalFilePath().toLocal8Bit();
    }
    qputenv("QT_QPA_PLATFORM", platform);
}

/// Takes the pictures of every review and puts them on one sheet, one row for each.
int makeSheet(const QString& tool, const QDir& pictures, const QString& program) {
    constexpr QSize cell{480, 300};
    constexpr int caption = 22;
    constexpr int columns = 4;
    std::vector<QStringList> rows;
    for (const Look& look : looks) {
        if (look.isReview()) {
            if (QProcess::execute(tool, {pictures.path(), program, look.pictures}) != 0) {
                return 1;
            }
            rows.push_back(pictures.entryList({look.pictures + QStringLiteral("-?.png")},
                                              QDir::Files, QDir::Name));
        }
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    char name[] = "window_pictures";
    char* arguments[] = {name, nullptr};
    const QGuiApplication application(count, arguments);
    QImage sheet(columns * cell.width(), static_cast<int>(rows.size()) * (cell.height() + caption),
                 QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < rows[row].size(); ++column) {
            const QPoint place(column * cell.width(),
                               static_cast<int>(row) * (cell.height() + caption));
            painter.drawText(QRect(place, QSize(cell.width(), caption)), Qt::AlignCenter,
                             rows[row][column]);
            const QImage picture(pictures.filePath(rows[row][column]));
            painter.drawImage(
                place + QPoint(4, caption),
                picture.scaled(cell - QSize(8, 4), Qt::KeepAspectRatio, Qt::SmoothTransformation));
        }
    }
    painter.end();
    save(sheet, pictures.filePath(QStringLiteral("sheet.png")));
    return 0;
}

} // namespace
} // namespace vistrane

int main(int argc, char** argv) {
    using namespace vistrane;
    const QStringList arguments = [&] {
        QStringList result;
        for (int index = 1; index < argc; ++index) {
            result << QString::fromLocal8Bit(argv[index]);
        }
        return result;
    }();
    if (arguments.size() == 3 && arguments[2] == QLatin1String("sheet")) {
        return makeSheet(QString::fromLocal8Bit(argv[0]), QDir(arguments[0]), arguments[1]);
    }
    const auto* const look =
        std::find_if(std::begin(looks), std::end(looks), [&](const Look& each) {
            return arguments.size() == 3 && each.pictures == arguments[2];
        });
    if (look == std::end(looks)) {
        std::fprintf(stderr, "usage: window_pictures FOLDER PROGRAM PICTURES\n");
        return 2;
    }
    const QDir frames = prepare(arguments[1]);
    setScreen(*look, frames);
    static Photographer photographer(*look, arguments[0], frames);
    qAddPreRoutine([] { photographer.begin(); });
    WindowOptions options;
    options.version = "0.1.0";
    if (!look->isFirstStart) {
        options.folder = frames.path().toStdString();
    }
    options.demoCamera = true;
    openWindow(options);
}
