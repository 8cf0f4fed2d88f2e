// Reading and writing PNG files beside libpng and QImage: png_bench [--short] [WORD...]
//
// Ours and the peer take turns, and both results are compared. One line for each pair:
//   name  kind  size  ours_ms  peer_ms  ratio  spread
// with tabs between. Times are the processor's, so that other work on the machine shows little, and
// medians; all of this runs on one thread. The ratio is the median of the turns' ratios, and the
// spread the distance of its quartiles. Of names that end in "-bytes" the two numbers are file
// lengths in thousands of bytes. WORD picks the lines whose name, kind or size has it. --short
// leaves out what takes very long.

#include <png.h>

#include <QBuffer>
#include <QImage>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/PictureSource.h"
#include "backends/pictures/png_encoding.h"
#include "backends/pictures/ppm.h"
#include "bench/SamplePictures.h"

namespace vistrane::bench {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int turns = 7;

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "png_bench: %s\n", what);
        std::exit(1);
    }
}

// libpng as its manual has it: errors end the program.

struct Source {
    std::span<const std::uint8_t> left;
};

void giveBytes(png_structp png, png_bytep to, std::size_t length) {
    auto* source = static_cast<Source*>(png_get_io_ptr(png));
    if (length > source->left.size()) {
        png_error(png, "end");
    }
    std::memcpy(to, source->left.data(), length);
    source->left = source->left.subspan(length);
}

void readByLibpng(const Bytes& file, Bytes& rgba) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    Source source{file};
    png_set_read_fn(png, &source, giveBytes);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_gray_to_rgb(png);
    png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    png_read_update_info(png, info);
    const std::size_t stride = png_get_rowbytes(png, info);
    for (std::size_t y = 0; y < png_get_image_height(png, info); ++y) {
        png_read_row(png, rgba.data() + y * stride, nullptr);
    }
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
}

void takeBytes(png_structp png, png_bytep bytes, std::size_t length) {
    auto* file = static_cast<Bytes*>(png_get_io_ptr(png));
    file->insert(file->end(), bytes, bytes + length);
}

void flushNothing(png_structp) {}

/// Level -1: the library's defaults. Else one simple filter.
Bytes writeByLibpng(const SamplePicture& picture, int level) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, takeBytes, flushNothing);
    png_set_IHDR(png, info, picture.width, picture.height, 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (level >= 0) {
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
        png_set_compression_level(png, level);
        png_set_compression_buffer_size(png, std::size_t{1} << 18);
    }
    png_write_info(png, info);
    for (std::size_t y = 0; y < picture.height; ++y) {
        png_write_row(png, picture.rgb.data() + y * picture.width * 3);
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

std::shared_ptr<const PictureSource> sourceOf(const Bytes& file) {
    auto data = DataBytes::copyOf(file);
    auto png = pictureFromPng(data, "bench", PictureLimits());
    if (auto* found = std::get_if<0>(&png)) {
        return *found;
    }
    auto raw = pictureFromPpm(data, "bench", PictureLimits());
    require(raw.index() == 0, "a picture of our own is refused");
    return std::get<0>(raw);
}

void readByUs(const std::shared_ptr<const NSData>& file, Bytes& rgba) {
    const auto result = pictureFromPng(file, "bench", PictureLimits());
    require(result.index() == 0, "a file is refused");
    const PictureSource& source = *std::get<0>(result);
    require(!source.readPixels(PixelForm::RGBA, rgba.data(),
                               static_cast<std::ptrdiff_t>(source.shape().width) * 4),
            "a file cannot be decoded");
}

double milliseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double timeOf(const std::function<void()>& work) {
    const double started = milliseconds();
    work();
    return milliseconds() - started;
}

double quantile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1) + 0.5)];
}

struct Label {
    std::string name;
    std::string kind;
    std::string size;

    bool matches(const std::vector<std::string>& words) const {
        const std::string all = name + " " + kind + " " + size;
        return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
            return all.find(word) != std::string::npos;
        });
    }
};

class Table {
public:
    explicit Table(std::vector<std::string> words) : words_(std::move(words)) {}

    bool wants(const Label& label) const { return label.matches(words_); }

    /// Saves making pictures that no line is printed of.
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
        std::vector<double> our;
        std::vector<double> their;
        std::vector<double> ratios;
        for (int turn = 0; turn < turns; ++turn) {
            our.push_back(timeOf(ours));
            their.push_back(timeOf(peer));
            ratios.push_back(our.back() / their.back());
        }
        print(label, quantile(our, 0.5), quantile(their, 0.5), quantile(ratios, 0.5),
              quantile(ratios, 0.75) - quantile(ratios, 0.25));
    }

    void compareLengths(Label label, std::size_t our, std::size_t their) const {
        label.name += "-bytes";
        if (wants(label)) {
            const auto ours = static_cast<double>(our);
            const auto theirs = static_cast<double>(their);
            print(label, ours / 1e3, theirs / 1e3, ours / theirs, 0.0);
        }
    }

private:
    static void print(const Label& label, double our, double their, double ratio, double spread) {
        std::printf("%s\t%s\t%s\t%.3f\t%.3f\t%.3f\t%.3f\n", label.name.c_str(), label.kind.c_str(),
                    label.size.c_str(), our, their, ratio, spread);
        std::fflush(stdout);
    }

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
    ours();
    checkPixels(picture, our);
    readByLibpng(file, their);
    require(our == their, "libpng reads other pixels");
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
    const std::string head = ppmHead(picture.width, picture.height);
    Bytes raw(head.begin(), head.end());
    raw.insert(raw.end(), picture.rgb.begin(), picture.rgb.end());
    const auto source = sourceOf(raw);
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
            const std::string head = ppmHead(width, height);
            Bytes raw(head.begin(), head.end());
            raw.insert(raw.end(), picture.rgb.begin(), picture.rgb.end());
            compareLoading(table, picture, encodeByUs(*sourceOf(raw)), "ours", size);
            compareLoading(table, picture, writeByLibpng(picture, -1), "defaults", size);
            compareSaving(table, picture, size, everything);
        }
    }
}

} // namespace

} // namespace vistrane::bench

int main(int count, char** arguments) {
    std::vector<std::string> words(arguments + 1, arguments + count);
    const auto asked = std::find(words.begin(), words.end(), "--short");
    const bool everything = asked == words.end();
    if (!everything) {
        words.erase(asked);
    }
    vistrane::bench::compareAll(vistrane::bench::Table(words), everything);
    return 0;
}
