// Reads and writes PNG files with this program and its peers: png_bench [--short] [WORD...]
//
// Ours and the peer take turns, and their results are compared. Each pair is a row as `printTurns`
// prints it, in milliseconds of processor time: everything runs on one thread, and other work on
// the machine matters little. In rows whose name ends in "-bytes" the numbers are file sizes in
// thousands of bytes. WORD selects rows by a part of their name, kind or size; --short omits the
// slowest ones.

#include <QBuffer>
#include <QImage>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_encoding.h"
#include "bench/SamplePictures.h"
#include "bench/measuring.h"
#include "bench/png_peers.h"

namespace vistrane::bench {

namespace {

constexpr int turns = 7;

std::unique_ptr<const PictureSource> sourceOf(const SamplePicture& picture) {
    auto pixels = ByteArray::copyOf(picture.rgb);
    require(pixels.has_value(), "there is no memory for a picture");
    return std::make_unique<DecodedPicture>(
        PictureShape{picture.width, picture.height, std::nullopt, false}, "bench",
        std::move(*pixels));
}

void readByUs(const std::shared_ptr<const NSData>& file, Bytes& rgba) {
    const auto result = pictureFromPng(file, "bench", PictureLimits());
    require(result.index() == 0, "a file is refused");
    const PictureSource& source = *std::get<0>(result);
    require(!source.readPixels(PixelForm::RGBA, rgba.data(),
                               static_cast<std::ptrdiff_t>(source.shape().width) * 4),
            "a file cannot be decoded");
}

bool matches(const Label& label, const std::vector<std::string>& words) {
    const std::string all = label.name + " " + label.kind + " " + label.size;
    return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return all.find(word) != std::string::npos;
    });
}

class Table {
public:
    explicit Table(std::vector<std::string> words) : words_(std::move(words)) {}

    bool wants(const Label& label) const { return matches(label, words_); }

    /// Whether any row of these pictures is requested. Generating them takes a while.
    bool wantsAnyOf(const std::string& kind, const std::string& size) const {
        return std::all_of(words_.begin(), words_.end(), [&](const std::string& word) {
            const bool isKind =
                std::find(sampleKinds.begin(), sampleKinds.end(), word) != sampleKinds.end();
            const bool isSize = word[0] >= '1' && word[0] <= '9';
            return (!isKind || word == kind) && (!isSize || size.find(word) != std::string::npos);
        });
    }

    void compare(const Label& label, const std::function<void()>& ours,
                 const std::function<void()>& peer) const {
        if (!wants(label)) {
            return;
        }
        ours();
        Turns taken;
        for (int turn = 0; turn < turns; ++turn) {
            taken.ours.push_back(timeOf(ours, processorMilliseconds));
            taken.peer.push_back(timeOf(peer, processorMilliseconds));
        }
        printTurns(label, taken);
    }

    void compareLengths(Label label, std::size_t our, std::size_t their) const {
        label.name += "-bytes";
        if (wants(label)) {
            printTurns(label,
                       {{static_cast<double>(our) / 1e3}, {static_cast<double>(their) / 1e3}});
        }
    }

private:
    std::vector<std::string> words_;
};

void checkPixels(const SamplePicture& picture, const Bytes& rgba) {
    for (std::size_t i = 0; i < rgba.size() / 4; ++i) {
        require(std::memcmp(&rgba[i * 4], &picture.rgb[i * 3], 3) == 0 && rgba[i * 4 + 3] == 255,
                "the pixels differ");
    }
}

void loadWithQImage(const Bytes& file, QImage& image) {
    image = QImage::fromData(file.data(), static_cast<int>(file.size()), "PNG");
}

bool isSame(const QImage& image, const Bytes& rgba) {
    const std::size_t stride = static_cast<std::size_t>(image.width()) * 4;
    bool same = stride * static_cast<std::size_t>(image.height()) == rgba.size();
    for (int y = 0; same && y < image.height(); ++y) {
        same = std::memcmp(image.constScanLine(y), &rgba[static_cast<std::size_t>(y) * stride],
                           stride) == 0;
    }
    return same;
}

void compareLoading(const Table& table, const SamplePicture& picture, const Bytes& file,
                    const std::string& writer, const std::string& size) {
    const auto data = DataBytes::copyOf(file);
    Bytes our(std::size_t{picture.width} * picture.height * 4);
    Bytes their(our.size());
    QImage image;
    const auto ours = [&] { readByUs(data, our); };
    table.compare({"load-" + writer + "-libpng", picture.kind, size}, ours,
                  [&] { readByLibpng(file, their); });
    table.compare({"load-" + writer + "-qimage", picture.kind, size}, ours,
                  [&] { loadWithQImage(file, image); });
    table.compare({"load-" + writer + "-isal", picture.kind, size}, ours,
                  [&] { readByUsWithIsal(file, their); });
    table.compare({"load-" + writer + "-libdeflate", picture.kind, size}, ours,
                  [&] { readByUsWithLibdeflate(file, their); });
    ours();
    checkPixels(picture, our);
    readByLibpng(file, their);
    require(our == their, "libpng reads other pixels");
    their.assign(their.size(), 0);
    readByUsWithIsal(file, their);
    require(our == their, "isa-l yields other pixels");
    their.assign(their.size(), 0);
    readByUsWithLibdeflate(file, their);
    require(our == their, "libdeflate yields other pixels");
    loadWithQImage(file, image);
    require(isSame(image.convertToFormat(QImage::Format_RGBA8888), our),
            "QImage reads other pixels");
}

Bytes encodeByUs(const PictureSource& source) {
    const auto file = encodePng(source);
    require(file.has_value(), "a picture cannot be encoded");
    return Bytes(file->bytes().begin(), file->bytes().end());
}

QByteArray saveWithQImage(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

void compareSaving(const Table& table, const SamplePicture& picture, const std::string& size,
                   bool everything) {
    const auto source = sourceOf(picture);
    std::size_t our = 0;
    std::size_t their = 0;
    const auto ours = [&] { our = encodePng(*source)->length(); };
    const Label beside{"save-libpng1", picture.kind, size};
    table.compare(beside, ours, [&] { their = writeByLibpng(picture, 1).size(); });
    if (table.wants(beside)) {
        table.compareLengths(beside, our, their);
    }
    if (everything) {
        const QImage image(picture.rgb.data(), static_cast<int>(picture.width),
                           static_cast<int>(picture.height), static_cast<int>(picture.width) * 3,
                           QImage::Format_RGB888);
        QByteArray saved;
        table.compare({"save-qimage", picture.kind, size}, ours,
                      [&] { saved = saveWithQImage(image); });
        if (!saved.isEmpty()) {
            Bytes rgba(std::size_t{picture.width} * picture.height * 4);
            readByLibpng(Bytes(saved.begin(), saved.end()), rgba);
            checkPixels(picture, rgba);
        }
    }
    Bytes rgba(std::size_t{picture.width} * picture.height * 4);
    readByLibpng(encodeByUs(*source), rgba);
    checkPixels(picture, rgba);
    readByLibpng(writeByLibpng(picture, 1), rgba);
    checkPixels(picture, rgba);
}

/// Files that take long to read in relation to their contents.
void compareHostile(const Table& table) {
    for (const std::string& kind : hostileKinds) {
        for (const std::size_t length : {300'000U, 3'000'000U}) {
            const Label label{"hostile", kind, std::to_string(length)};
            if (table.wants(label)) {
                const Bytes file = hostileFile(kind, length);
                const auto data = DataBytes::copyOf(file);
                Bytes our(4);
                Bytes their(4);
                table.compare(
                    label, [&] { readByUs(data, our); }, [&] { readByLibpng(file, their); });
                require(our == their, "libpng reads another pixel");
            }
        }
    }
}

void compareAll(const Table& table, bool everything) {
    constexpr std::pair<std::uint32_t, std::uint32_t> sizes[] = {
        {640, 480}, {1920, 1080}, {3840, 2160}};
    for (const auto& [width, height] : sizes) {
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        for (const std::string& kind : sampleKinds) {
            if (!table.wantsAnyOf(kind, size)) {
                continue;
            }
            const SamplePicture picture = samplePicture(kind, width, height);

            compareLoading(table, picture, encodeByUs(*sourceOf(picture)), "ours", size);
            compareLoading(table, picture, writeByLibpng(picture, -1), "defaults", size);
            compareSaving(table, picture, size, everything);
        }
    }
}

} // namespace

} // namespace vistrane::bench

int main(int count, char** arguments) {
    std::vector<std::string> words(arguments + 1, arguments + count);
    const auto isShort = std::find(words.begin(), words.end(), "--short");
    const bool everything = isShort == words.end();
    if (!everything) {
        words.erase(isShort);
    }
    const vistrane::bench::Table table(words);
    vistrane::bench::compareAll(table, everything);
    vistrane::bench::compareHostile(table);
    return 0;
}
