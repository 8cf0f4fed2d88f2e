#include "tests/backends/movies/MovieTestKit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace vistrane {

TestFolder::TestFolder() {
    std::string name = std::filesystem::temp_directory_path() / "movies-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) {
        std::abort();
    }
    path_ = name;
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TestFolder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void RecordingObserver::pictureWasAppended() {
    const std::lock_guard lock(mutex_);
    ++appended_;
}

void RecordingObserver::pictureWasRefused(const NSError& reason) {
    const std::lock_guard lock(mutex_);
    refusals_.push_back(reason);
}

void RecordingObserver::movieIsWhole(const std::string& path) {
    const std::lock_guard lock(mutex_);
    outcomes_[path] = std::nullopt;
    changed_.notify_all();
}

void RecordingObserver::movieFailed(const std::string& path, const NSError& reason) {
    const std::lock_guard lock(mutex_);
    outcomes_[path] = reason;
    changed_.notify_all();
}

int RecordingObserver::appended() const {
    const std::lock_guard lock(mutex_);
    return appended_;
}

std::vector<NSError> RecordingObserver::refusals() const {
    const std::lock_guard lock(mutex_);
    return refusals_;
}

std::optional<NSError> RecordingObserver::outcome(const std::string& path) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return outcomes_.contains(path); });
    return outcomes_[path];
}

bool RecordingObserver::hasOutcome(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    return outcomes_.contains(path);
}

BufferPointer paint(std::size_t width, std::size_t height,
                    const std::function<Rgb(std::size_t, std::size_t)>& color) {
    BufferPointer buffer(PixelBuffer::make(width, height));
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const Rgb rgb = color(x, y);
            std::uint8_t* pixel = buffer->bytes() + y * buffer->bytesPerRow() + 4 * x;
            pixel[0] = 0x5A; // means nothing, so it must change nothing
            for (std::size_t i = 0; i < 3; ++i) {
                pixel[1 + i] = static_cast<std::uint8_t>(rgb[i]);
            }
        }
    }
    return buffer;
}

BufferPointer plain(std::size_t width, std::size_t height, Rgb color) {
    return paint(width, height, [&](std::size_t, std::size_t) { return color; });
}

BufferPointer noise(std::size_t width, std::size_t height, std::uint32_t seed) {
    std::uint32_t state = seed * 2654435761U + 1;
    const auto next = [&state] {
        state = state * 1664525U + 1013904223U;
        return static_cast<int>(state >> 24);
    };
    return paint(width, height, [&](std::size_t, std::size_t) {
        return Rgb{next(), next(), next()};
    });
}

BufferPointer scene(std::size_t width, std::size_t height, int index) {
    return paint(width, height, [&](std::size_t x, std::size_t y) {
        const double wave = std::sin((static_cast<double>(x) + 2.0 * index) / 9.0);
        const int value = 128 + static_cast<int>(90 * wave);
        return Rgb{value, static_cast<int>(y * 2 % 256), 255 - value};
    });
}

NSDictionary trackSettings(std::int64_t width, std::int64_t height) {
    return {{AVVideoCodecKey, std::string(AVVideoCodecTypeH264)},
            {AVVideoScalingModeKey, std::string(AVVideoScalingModeResizeAspect)},
            {AVVideoWidthKey, width},
            {AVVideoHeightKey, height}};
}

OpenMovie::OpenMovie(Movies& movies, const std::string& path, std::int64_t width,
                     std::int64_t height) {
    AVAssetWriterResult result =
        movies.assetWriterWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie);
    creationError = result.error;
    if (creationError) {
        return;
    }
    writer = result.writer;
    input = movies.assetWriterInputWithMediaType(AVMediaTypeVideo, trackSettings(width, height));
    adaptor = movies.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input, {});
    writer->addInput(input);
    input->setExpectsMediaDataInRealTime(true);
    hasStarted = writer->startWriting();
    writer->startSessionAtSourceTime(kCMTimeZero);
}

void OpenMovie::finish(std::function<void()> handler) {
    input->markAsFinished();
    writer->finishWritingWithCompletionHandler(std::move(handler));
}

CMTime frameTime(int index, int frameRate) {
    return index == 0 ? kCMTimeZero
                      : CMTimeAdd(CMTimeMake(index, frameRate), CMTimeMake(1, frameRate));
}

std::optional<NSError> makeMovie(const std::string& path, std::int64_t width, std::int64_t height,
                                 int frames, int frameRate) {
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, width, height);
    if (movie.creationError) {
        return movie.creationError;
    }
    for (int i = 0; i < frames; ++i) {
        movie.append(scene(static_cast<std::size_t>(width), static_cast<std::size_t>(height), i),
                     frameTime(i, frameRate));
    }
    movie.finish();
    return observer.outcome(path);
}

std::string outputOf(const std::string& command) {
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return {};
    }
    std::string output;
    std::array<char, 65536> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe)) {
        output.append(part.data(), count);
    }
    ::pclose(pipe);
    return output;
}

std::string quoted(const std::string& path) {
    std::string text = "'";
    for (const char c : path) {
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return text + "'";
}

std::string probe(const std::string& path, const std::string& entries) {
    return outputOf("ffprobe -v error -of csv=p=0 -show_entries " + entries + " " +
                    quoted("file:" + path));
}

namespace {

/// The number at the beginning of each line that has one.
std::vector<std::int64_t> leadingNumbers(const std::string& text) {
    std::istringstream lines(text);
    std::vector<std::int64_t> numbers;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() >= '0' && line.front() <= '9') {
            numbers.push_back(std::atoll(line.c_str()));
        }
    }
    return numbers;
}

} // namespace

std::vector<std::int64_t> shownTimes(const std::string& path) {
    auto times = leadingNumbers(probe(path, "packet=pts"));
    std::sort(times.begin(), times.end());
    return times;
}

std::vector<std::int64_t> decodedTimes(const std::string& path) {
    return leadingNumbers(probe(path, "frame=pts"));
}

std::string decodeToRgb(const std::string& path) {
    return outputOf("ffmpeg -v error -nostdin -i " + quoted("file:" + path) +
                    " -fps_mode passthrough"
                    " -vf scale=flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp"
                    ":in_h_chr_pos=0:in_v_chr_pos=128"
                    " -pix_fmt rgb24 -f rawvideo -");
}

} // namespace vistrane
