#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "backends/movies/Movies.h"
#include "backends/pictures/PixelBuffer.h"
#include "backends/posix/MediaObserver.h"

namespace vistrane {

/// A folder of its own for one test; goes away with all that is in it.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    /// All names, hidden ones too, sorted.
    std::vector<std::string> names() const;

private:
    std::string path_;
};

/// Keeps what a movie tells, and lets a test wait for its end.
class RecordingObserver final : public MediaObserver {
public:
    void pictureWasAppended() override;
    void pictureWasRefused(const NSError& reason) override;
    void movieIsWhole(const std::string& path) override;
    void movieFailed(const std::string& path, const NSError& reason) override;

    int appended() const;
    std::vector<NSError> refusals() const;

    /// Waits for the movie's end: nothing when it is whole, else the reason.
    std::optional<NSError> outcome(const std::string& path);
    bool hasOutcome(const std::string& path) const;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int appended_ = 0;
    std::vector<NSError> refusals_;
    std::map<std::string, std::optional<NSError>> outcomes_;
};

struct BufferRelease {
    void operator()(PixelBuffer* buffer) const { buffer->release(); }
};
using BufferPointer = std::unique_ptr<PixelBuffer, BufferRelease>;

using Rgb = std::array<int, 3>;

/// A buffer whose pixels `color(x, y)` gives.
BufferPointer paint(std::size_t width, std::size_t height,
                    const std::function<Rgb(std::size_t x, std::size_t y)>& color);
BufferPointer plain(std::size_t width, std::size_t height, Rgb color);
/// Differs from picture to picture and compresses badly.
BufferPointer noise(std::size_t width, std::size_t height, std::uint32_t seed);
/// A soft moving scene, which makes the encoder reorder pictures.
BufferPointer scene(std::size_t width, std::size_t height, int index);

/// The three objects of one movie, made as the program makes them, and started.
struct OpenMovie {
    OpenMovie(Movies& movies, const std::string& path, std::int64_t width, std::int64_t height);

    bool append(const BufferPointer& buffer, CMTime time) {
        return adaptor->appendPixelBuffer(buffer.get(), time);
    }
    void finish(std::function<void()> handler = [] {});

    std::shared_ptr<AVAssetWriter> writer;
    std::shared_ptr<AVAssetWriterInput> input;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor;
    std::optional<NSError> creationError;
    bool hasStarted = false;
};

/// The settings of a track as the program gives them.
NSDictionary trackSettings(std::int64_t width, std::int64_t height);

/// The time of frame `index` as the program gives it at that frame rate: 0, then index + 1.
CMTime frameTime(int index, int frameRate);

/// Makes a whole movie of `frames` pictures of `scene` and waits for its end.
std::optional<NSError> makeMovie(const std::string& path, std::int64_t width, std::int64_t height,
                                 int frames, int frameRate);

/// The standard output of a command; quote paths with `quoted`.
std::string outputOf(const std::string& command);
std::string quoted(const std::string& path);

/// One line of `ffprobe -show_entries entries` for each entry, values separated by commas.
std::string probe(const std::string& path, const std::string& entries);

/// The presentation times that a demuxer finds, in ticks, sorted.
std::vector<std::int64_t> shownTimes(const std::string& path);
/// The presentation times of the frames, in ticks, as the decoder gives them.
std::vector<std::int64_t> decodedTimes(const std::string& path);

/// All frames, decoded and turned into red, green, blue bytes by the tags of the movie. Chroma is
/// taken from the even columns, where H.264 has it; the converter would not look at that tag.
std::string decodeToRgb(const std::string& path);

} // namespace vistrane
