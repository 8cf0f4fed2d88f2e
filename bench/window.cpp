// Single pictures in the window: window_bench TURNS FOLDER...
//
// FOLDER holds frames. Three rows for each, as `printTurns` prints them:
//   still-to-file  the main thread's time from a still's arrival until its file is written; the
//                  peer decodes the same pixels with QImage and saves them with its defaults
//   still-painting painting that still; the peer scales it with QImage
//   playback-tick  one tick of the playback with its painting; the peer reads with QImageReader,
//                  scaled to the same size, and paints
// The controller is the program's own, with real files and pictures.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <QApplication>
#include <QColorSpace>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QWidget>
#include <QWindow>

#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/PictureAppKit.h"
#include "backends/pictures/PictureData.h"
#include "backends/qt/controls/QtImageView.h"
#include "backends/sim/Sim.h"
#include "bench/RealFiles.h"
#include "bench/measuring.h"
#include "core/app/AppDelegate.h"
#include "platform/avfoundation/AVFoundation.h"

namespace vistrane::bench {

namespace {

/// The size of the picture view in a new window.
constexpr QSize viewSize(530, 372);

/// The real pictures. Everything else is simulated.
class RealPictures final : public PictureAppKit {
public:
    RealPictures(AppKit& sim, const Pictures& pictures) : PictureAppKit(pictures), sim_(sim) {}

    NSApplication& sharedApplication() override { return sim_.sharedApplication(); }
    NSWorkspace& sharedWorkspace() override { return sim_.sharedWorkspace(); }
    std::unique_ptr<NSAlert> alert() override { return sim_.alert(); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) override {
        return sim_.alertWithError(error);
    }
    std::unique_ptr<NSOpenPanel> openPanel() override { return sim_.openPanel(); }
    std::shared_ptr<NSMenu> menu() override { return sim_.menu(); }
    std::shared_ptr<NSImage> imageNamed(const std::string& name) override {
        return sim_.imageNamed(name);
    }
    void NSBeep() override { sim_.NSBeep(); }

private:
    AppKit& sim_;
};

class Observer final : public PictureObserver {};

/// The controller with the window's picture view.
class Controller {
public:
    explicit Controller(const std::string& folder) {
        sim_.log().recordCalls(false);
        delegate_.connectInterface(sim_.nib());
        sim_.nib().button("outfolderB").currentTitle = folder;
        delegate_.myDisplay = std::make_shared<QtImageView>(display_);
        display_.resize(viewSize);
        display_.setBackground(Qt::black);
        display_.show();
        while (!display_.windowHandle()->isExposed()) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    AppDelegate& delegate() { return delegate_; }
    PictureWidget& display() { return display_; }
    std::shared_ptr<AVCapturePhotoOutput> output() {
        return sim_.platform().avFoundation.photoOutput();
    }

private:
    Platform platform() {
        Platform platform = sim_.platform();
        return {files_,
                pictureKit_,
                platform.avFoundation,
                platform.coreVideo,
                platform.coreGraphics,
                platform.dispatch};
    }

    Sim sim_;
    Observer observer_;
    Pictures pictures_{observer_};
    RealFiles files_{sim_.platform().foundation};
    RealPictures pictureKit_{sim_.platform().appKit, pictures_};
    PictureWidget display_;
    AppDelegate delegate_{platform()};
};

class Photo final : public AVCapturePhoto {
public:
    explicit Photo(std::shared_ptr<NSData> bytes) : bytes_(std::move(bytes)) {}
    std::shared_ptr<NSData> fileDataRepresentation() const override { return bytes_; }

private:
    std::shared_ptr<NSData> bytes_;
};

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".png") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::uint8_t> rgbOf(const QImage& image) {
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < rgb.height(); ++y) {
        bytes.insert(bytes.end(), rgb.constScanLine(y), rgb.constScanLine(y) + rgb.width() * 3);
    }
    return bytes;
}

/// The picture as the camera's thread delivers it.
std::shared_ptr<NSData> stillOf(const QImage& image) {
    auto pixels = ByteArray::copyOf(rgbOf(image));
    require(pixels.has_value(), "there is no memory for the still");
    const PictureShape shape{static_cast<std::uint32_t>(image.width()),
                             static_cast<std::uint32_t>(image.height()), std::nullopt, false};
    auto still = std::make_shared<DecodedPicture>(shape, "still", std::move(*pixels));
    still->encodeAhead();
    return std::make_shared<PictureData>(std::move(still));
}

/// The picture as a binary PPM file, which the peer reads fastest.
std::vector<std::uint8_t> ppmOf(const QImage& image) {
    const std::string header =
        "P6\n" + std::to_string(image.width()) + " " + std::to_string(image.height()) + "\n255\n";
    std::vector<std::uint8_t> bytes(header.begin(), header.end());
    const std::vector<std::uint8_t> rgb = rgbOf(image);
    bytes.insert(bytes.end(), rgb.begin(), rgb.end());
    return bytes;
}

std::string sizeOf(const QImage& image) {
    return std::to_string(image.width()) + "x" + std::to_string(image.height());
}

/// Waits for a file that another thread writes.
QImage readWhenWritten(const std::string& folder) {
    for (int attempt = 0; attempt < 500; ++attempt) {
        const std::vector<std::string> paths = filesIn(folder);
        const QImage image = paths.empty() ? QImage() : QImage(QString::fromStdString(paths[0]));
        if (!image.isNull()) {
            return image;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return {};
}

/// Compares only the pixels. QImage also compares colour spaces, which not all files have.
bool haveSamePixels(QImage one, QImage other) {
    one.setColorSpace({});
    other.setColorSpace({});
    return one.convertToFormat(QImage::Format_RGB32) == other.convertToFormat(QImage::Format_RGB32);
}

void measureStill(long turns, const std::string& frame) {
    const QImage picture(QString::fromStdString(frame));
    require(!picture.isNull(), "not a picture: " + frame);
    const std::vector<std::uint8_t> bytes = ppmOf(picture);
    std::string folder = std::filesystem::temp_directory_path().string() + "/still-XXXXXX";
    require(mkdtemp(folder.data()) != nullptr, "cannot make a folder");
    const std::string path = folder + "/peer";
    Turns times;
    Turns paintings;
    {
        Controller controller(folder);
        const Photo photo(stillOf(picture));
        const auto output = controller.output();
        for (long turn = 0; turn < turns; ++turn) {
            // The same still would not be scaled again.
            controller.delegate().myDisplay->setImage(nullptr);
            times.ours.push_back(timeOf([&] {
                controller.delegate().captureOutputDidFinishProcessingPhoto(*output, &photo, {});
            }));
            paintings.ours.push_back(timeOf([&] { controller.display().repaint(); }));
            QImage scaled;
            const QSize shown = picture.size().scaled(viewSize, Qt::KeepAspectRatio);
            paintings.peer.push_back(timeOf([&] {
                scaled = picture.scaled(shown, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            }));
            const QImage ours = readWhenWritten(folder);
            times.peer.push_back(timeOf([&] {
                QImage::fromData(bytes.data(), static_cast<int>(bytes.size()), "PPM")
                    .save(QString::fromStdString(path), "PNG");
            }));
            require(haveSamePixels(ours, QImage(QString::fromStdString(path))),
                    "the saved stills differ");
            for (const std::string& each : filesIn(folder)) {
                std::filesystem::remove(each);
            }
            std::filesystem::remove(path);
        }
    }
    std::filesystem::remove_all(folder);
    printTurns({"still-to-file", "noise", sizeOf(picture)}, times);
    printTurns({"still-painting", "noise", sizeOf(picture)}, paintings);
}

/// The peer of the playback: a widget that shows a file.
class PlainWidget final : public QWidget {
public:
    PlainWidget() {
        resize(viewSize);
        show();
    }

    void load(const std::string& path) {
        QImageReader reader(QString::fromStdString(path));
        reader.setScaledSize(reader.size().scaled(size(), Qt::KeepAspectRatio));
        image_ = reader.read();
        repaint();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::black);
        QRect place(QPoint(), image_.size());
        place.moveCenter(rect().center());
        painter.drawImage(place, image_);
    }

private:
    QImage image_;
};

/// The mean difference in the centre, where both show the picture. Two good scaling methods differ
/// a little.
double meanDifference(const QImage& one, const QImage& other) {
    double sum = 0.0;
    int count = 0;
    for (int y = one.height() / 4; y < one.height() * 3 / 4; ++y) {
        for (int x = one.width() / 8; x < one.width() * 7 / 8; ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            sum += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
                   std::abs(qBlue(a) - qBlue(b));
            count += 3;
        }
    }
    return sum / count;
}

void measureTick(long turns, const std::string& folder) {
    std::vector<std::string> frames = filesIn(folder);
    require(frames.size() > static_cast<std::size_t>(turns), "too few frames in " + folder);
    const std::string size = sizeOf(QImage(QString::fromStdString(frames[0])));
    Controller controller(folder);
    AppDelegate& delegate = controller.delegate();
    PictureWidget& display = controller.display();
    PlainWidget plain;
    QApplication::processEvents();
    delegate.pictureArray.store(std::make_shared<const std::vector<std::string>>(frames));

    Turns times;
    for (long turn = -1; turn < turns; ++turn) {
        const std::int64_t index = turn + 1;
        delegate.playing = index;
        const double ours = timeOf([&] {
            delegate.startPlayTimer(nullptr);
            display.repaint();
        });
        const double peer = timeOf([&] { plain.load(frames[static_cast<std::size_t>(index)]); });
        if (turn >= 0) {
            times.ours.push_back(ours);
            times.peer.push_back(peer);
        }
    }
    const double difference = meanDifference(display.grab().toImage(), plain.grab().toImage());
    require(difference < 3.0,
            "the pictures differ by " + std::to_string(difference) + " in the mean");
    printTurns({"playback-tick", "noise", size}, times);
}

int run(int count, char** arguments) {
    require(count > 2, "usage: window_bench TURNS FOLDER...");
    const QApplication application(count, arguments);
    const long turns = std::strtol(arguments[1], nullptr, 10);
    for (int at = 2; at < count; ++at) {
        const std::string folder = arguments[at];
        measureStill(std::max(turns / 3, 5L), filesIn(folder).at(0));
        measureTick(turns, folder);
    }
    return 0;
}

} // namespace

} // namespace vistrane::bench

int main(int count, char** arguments) {
    return vistrane::bench::run(count, arguments);
}
