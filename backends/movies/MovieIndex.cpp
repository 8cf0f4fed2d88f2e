#include "backends/movies/MovieIndex.h"

#include <algorithm>
#include <string_view>

namespace vistrane {

namespace {

/// Appends big-endian numbers and boxes. Fills in the size of a box at its end.
class BoxWriter {
public:
    void u8(unsigned value) { bytes_.push_back(static_cast<std::uint8_t>(value)); }
    void u16(std::uint64_t value) {
        u8(value >> 8 & 0xFF);
        u8(value & 0xFF);
    }
    void u32(std::uint64_t value) {
        u16(value >> 16 & 0xFFFF);
        u16(value & 0xFFFF);
    }
    void i32(std::int64_t value) { u32(static_cast<std::uint32_t>(value)); }
    void u64(std::uint64_t value) {
        u32(value >> 32);
        u32(value & 0xFFFFFFFF);
    }
    void text(std::string_view letters) {
        bytes_.insert(bytes_.end(), letters.begin(), letters.end());
    }
    void zeros(std::size_t count) { bytes_.insert(bytes_.end(), count, 0); }
    void bytes(const std::vector<std::uint8_t>& more) {
        bytes_.insert(bytes_.end(), more.begin(), more.end());
    }
    void versionAndFlags(unsigned version, unsigned flags) {
        u32(std::uint64_t{version} << 24 | flags);
    }

    template <typename Content>
    void box(std::string_view type, const Content& content) {
        const std::size_t start = bytes_.size();
        u32(0);
        text(type);
        content();
        const std::size_t size = bytes_.size() - start;
        for (std::size_t i = 0; i < 4; ++i) {
            bytes_[start + i] = static_cast<std::uint8_t>(size >> (24 - 8 * i) & 0xFF);
        }
    }

    std::vector<std::uint8_t> take() { return std::move(bytes_); }

private:
    std::vector<std::uint8_t> bytes_;
};

/// An entry of a time table: consecutive samples with the same value.
struct Run {
    std::uint32_t count;
    std::int64_t value;
};

void extend(std::vector<Run>& runs, std::int64_t value) {
    if (!runs.empty() && runs.back().value == value) {
        ++runs.back().count;
    } else {
        runs.push_back({1, value});
    }
}

class MovieBoxWriter {
public:
    explicit MovieBoxWriter(const MovieTrack& track) : track_(track) {
        times_.reserve(track.samples.size());
        for (const MovieSample& sample : track.samples) {
            times_.push_back(sample.time);
        }
        std::sort(times_.begin(), times_.end());
    }

    std::vector<std::uint8_t> write() {
        out_.box("moov", [&] {
            out_.box("mvhd", [&] { movieHeader(); });
            out_.box("trak", [&] { trackBox(); });
        });
        return out_.take();
    }

private:
    std::int64_t begin() const { return times_.front(); }
    std::int64_t mediaDuration() const { return track_.end - begin(); }

    void matrix() {
        constexpr std::uint32_t one = 0x00010000;
        constexpr std::uint32_t oneOfTheLastColumn = 0x40000000;
        for (const std::uint32_t value : {one, 0U, 0U, 0U, one, 0U, 0U, 0U, oneOfTheLastColumn}) {
            out_.u32(value);
        }
    }

    void movieHeader() {
        out_.versionAndFlags(0, 0);
        times();
        out_.i32(track_.timescale);
        out_.i32(track_.end);
        out_.u32(0x00010000); // rate 1
        out_.u16(0x0100);     // volume 1
        out_.zeros(10);
        matrix();
        out_.zeros(24); // preview, poster, selection, current time
        out_.u32(2);    // the next free track number
    }

    void trackBox() {
        out_.box("tkhd", [&] { trackHeader(); });
        out_.box("edts", [&] { out_.box("elst", [&] { editList(); }); });
        out_.box("mdia", [&] { mediaBox(); });
    }

    /// Creation and modification, in seconds since 1904 (QuickTime File Format, "Movie Header
    /// Atoms"). The field ends in 2040; then they are unknown.
    void times() {
        constexpr std::int64_t from1904To1970 = 2'082'844'800;
        const std::int64_t time = track_.created > 0 ? track_.created + from1904To1970 : 0;
        const auto field = time <= UINT32_MAX ? static_cast<std::uint32_t>(time) : 0U;
        out_.u32(field);
        out_.u32(field);
    }

    void trackHeader() {
        constexpr unsigned enabledInMovieAndPreview = 7;
        out_.versionAndFlags(0, enabledInMovieAndPreview);
        times();
        out_.u32(1); // track number
        out_.zeros(4);
        out_.i32(track_.end);
        out_.zeros(8);
        out_.zeros(8); // layer, group, no volume
        matrix();
        out_.u32(std::uint64_t{track_.width} << 16);
        out_.u32(std::uint64_t{track_.height} << 16);
    }

    /// A track that does not start at zero begins with an empty edit.
    void editList() {
        constexpr std::uint32_t normalRate = 0x00010000;
        out_.versionAndFlags(0, 0);
        out_.u32(begin() > 0 ? 2 : 1);
        if (begin() > 0) {
            out_.i32(begin());
            out_.i32(-1);
            out_.u32(normalRate);
        }
        out_.i32(mediaDuration());
        out_.i32(0);
        out_.u32(normalRate);
    }

    void mediaBox() {
        out_.box("mdhd", [&] {
            constexpr unsigned undeterminedLanguage = 0x55C4; // "und"
            out_.versionAndFlags(0, 0);
            times();
            out_.i32(track_.timescale);
            out_.i32(mediaDuration());
            out_.u16(undeterminedLanguage);
            out_.u16(0);
        });
        handler("mhlr", "vide", "VideoHandler");
        out_.box("minf", [&] {
            out_.box("vmhd", [&] {
                out_.versionAndFlags(0, 1);
                out_.zeros(8); // graphics mode: copy
            });
            handler("dhlr", "url ", "DataHandler");
            out_.box("dinf", [&] { out_.box("dref", [&] { dataReference(); }); });
            out_.box("stbl", [&] { sampleTable(); });
        });
    }

    void handler(std::string_view component, std::string_view type, std::string_view name) {
        out_.box("hdlr", [&] {
            out_.versionAndFlags(0, 0);
            out_.text(component);
            out_.text(type);
            out_.zeros(12);
            out_.u8(static_cast<unsigned>(name.size()));
            out_.text(name);
        });
    }

    void dataReference() {
        constexpr unsigned inThisFile = 1;
        out_.versionAndFlags(0, 0);
        out_.u32(1);
        out_.box("url ", [&] { out_.versionAndFlags(0, inThisFile); });
    }

    void sampleTable() {
        out_.box("stsd", [&] {
            out_.versionAndFlags(0, 0);
            out_.u32(1);
            out_.box("avc1", [&] { sampleDescription(); });
        });
        out_.box("stts", [&] { durations(); });
        const std::vector<Run> offsets = compositionOffsets();
        if (offsets.size() > 1 || offsets.front().value != 0) {
            out_.box("ctts", [&] { composition(offsets); });
            out_.box("cslg", [&] { compositionBounds(offsets); });
        }
        out_.box("stss", [&] { keySamples(); });
        out_.box("stsc", [&] {
            out_.versionAndFlags(0, 0);
            out_.u32(1);
            out_.u32(1); // first chunk of the run
            out_.u32(1); // samples per chunk
            out_.u32(1); // sample description
        });
        out_.box("stsz", [&] { sizes(); });
        out_.box("co64", [&] { chunkOffsets(); });
    }

    void sampleDescription() {
        constexpr std::uint32_t dotsPerInch = 72U << 16;
        out_.zeros(6);
        out_.u16(1); // data reference
        out_.zeros(16);
        out_.u16(track_.width);
        out_.u16(track_.height);
        out_.u32(dotsPerInch);
        out_.u32(dotsPerInch);
        out_.u32(0);
        out_.u16(1);     // frames per sample
        out_.zeros(32);  // compressor name
        out_.u16(24);    // depth: colour without alpha
        out_.u16(65535); // no colour table
        out_.box("avcC", [&] { out_.bytes(track_.configuration); });
        out_.box("colr", [&] {
            out_.text("nclc"); // BT.709 primaries, transfer function and matrix
            out_.u16(1);
            out_.u16(1);
            out_.u16(1);
        });
        out_.box("pasp", [&] {
            out_.u32(1);
            out_.u32(1);
        });
    }

    void runs(const std::vector<Run>& table) {
        out_.u32(table.size());
        for (const Run& run : table) {
            out_.u32(run.count);
            out_.i32(run.value);
        }
    }

    void durations() {
        std::vector<Run> table;
        for (std::size_t i = 0; i < times_.size(); ++i) {
            const std::int64_t next = i + 1 < times_.size() ? times_[i + 1] : track_.end;
            extend(table, next - times_[i]);
        }
        out_.versionAndFlags(0, 0);
        runs(table);
    }

    std::vector<Run> compositionOffsets() const {
        std::vector<Run> table;
        for (std::size_t i = 0; i < times_.size(); ++i) {
            extend(table, track_.samples[i].time - times_[i]);
        }
        return table;
    }

    /// Two runs without samples end the table. ffmpeg's demuxer shifts the decoding times by the
    /// least offset, and leaves the last two runs out when it looks for it: packets would be
    /// presented before they are decoded.
    void composition(std::vector<Run> offsets) {
        constexpr unsigned signedOffsets = 1;
        offsets.insert(offsets.end(), 2, Run{});
        out_.versionAndFlags(signedOffsets, 0);
        runs(offsets);
    }

    void compositionBounds(const std::vector<Run>& offsets) {
        const auto isLess = [](const Run& a, const Run& b) { return a.value < b.value; };
        const auto [least, greatest] = std::minmax_element(offsets.begin(), offsets.end(), isLess);
        out_.versionAndFlags(0, 0);
        out_.i32(-least->value); // shift after which no picture is presented before it is decoded
        out_.i32(least->value);
        out_.i32(greatest->value);
        out_.i32(0);
        out_.i32(mediaDuration());
    }

    void keySamples() {
        std::vector<std::size_t> keys;
        for (std::size_t i = 0; i < track_.samples.size(); ++i) {
            if (track_.samples[i].isKey) {
                keys.push_back(i + 1);
            }
        }
        out_.versionAndFlags(0, 0);
        out_.u32(keys.size());
        for (const std::size_t key : keys) {
            out_.u32(key);
        }
    }

    void sizes() {
        out_.versionAndFlags(0, 0);
        out_.u32(0); // sizes differ
        out_.u32(track_.samples.size());
        for (const MovieSample& sample : track_.samples) {
            out_.u32(sample.size);
        }
    }

    void chunkOffsets() {
        out_.versionAndFlags(0, 0);
        out_.u32(track_.samples.size());
        for (const MovieSample& sample : track_.samples) {
            out_.u64(sample.offset);
        }
    }

    const MovieTrack& track_;
    std::vector<std::int64_t> times_; // in presentation order
    BoxWriter out_;
};

constexpr std::size_t mediaBoxOffset = mediaBoxSizeOffset - 8;

} // namespace

std::vector<std::uint8_t> movieFileHeader() {
    BoxWriter out;
    out.box("ftyp", [&] {
        out.text("qt  ");
        out.u32(0x200);
        out.text("qt  ");
    });
    out.u32(1); // a 64-bit size follows the type
    out.text("mdat");
    out.u64(0);
    return out.take();
}

std::array<std::uint8_t, 8> mediaBoxSize(std::uint64_t endOfSamples) {
    const std::uint64_t size = endOfSamples - mediaBoxOffset;
    std::array<std::uint8_t, 8> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(size >> (56 - 8 * i) & 0xFF);
    }
    return bytes;
}

std::vector<std::uint8_t> movieBox(const MovieTrack& track) {
    return MovieBoxWriter(track).write();
}

} // namespace vistrane
