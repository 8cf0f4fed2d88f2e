#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/movies/MovieObserver.h"
#include "backends/movies/Movies.h"
#include "backends/pictures/PixelBuffer.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {

/// The bytes of a file.
inline std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Records what a writer reports, and lets a test wait for a movie's end. Any thread.
class RecordingObserver final : public MovieObserver {
public:
    void pictureWasAppended() override { ++appended_; }
    void pictureWasRefused(const std::string&, const NSError& reason) override {
        const std::lock_guard lock(mutex_);
        refusals_.push_back(reason);
    }
    void movieIsWhole(const FinishedMovie& movie) override { end(movie.path, std::nullopt); }
    void movieFailed(const std::string& path, const NSError& reason) override { end(path, reason); }

    int appended() const { return appended_; }
    std::vector<NSError> refusals() const {
        const std::lock_guard lock(mutex_);
        return refusals_;
    }
    /// Waits for the movie's end: nothing when it is complete, else the reason.
    std::optional<NSError> outcome(const std::string& path) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return outcomes_.contains(path); });
        return outcomes_[path];
    }
    /// Before another movie with that path.
    void forget(const std::string& path) {
        const std::lock_guard lock(mutex_);
        outcomes_.erase(path);
    }
    bool hasOutcome(const std::string& path) const {
        const std::lock_guard lock(mutex_);
        return outcomes_.contains(path);
    }

private:
    void end(const std::string& path, std::optional<NSError> error) {
        const std::lock_guard lock(mutex_);
        outcomes_[path] = std::move(error);
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<int> appended_ = 0;
    std::vector<NSError> refusals_;
    std::map<std::string, std::optional<NSError>> outcomes_;
};

struct BufferRelease {
    void operator()(PixelBuffer* buffer) const { buffer->release(); }
};
using BufferPointer = std::unique_ptr<PixelBuffer, BufferRelease>;

using Rgb = std::array<int, 3>;

/// The same bytes for the same seed.
std::vector<std::uint8_t> randomBytes(std::size_t count, std::uint32_t seed);

/// A test's parameter, and what the test is called after it: "2x3".
using TwoNumbers = std::pair<int, int>;
inline std::string nameOf(const testing::TestParamInfo<TwoNumbers>& info) {
    return std::to_string(info.param.first) + "x" + std::to_string(info.param.second);
}

/// A buffer whose pixels `color(x, y)` gives.
BufferPointer paint(std::size_t width, std::size_t height,
                    const std::function<Rgb(std::size_t x, std::size_t y)>& color);
BufferPointer plain(std::size_t width, std::size_t height, Rgb color);
/// Differs for each index and compresses badly.
BufferPointer noise(std::size_t width, std::size_t height, int index);
/// A soft moving scene, for which the encoder reorders pictures.
BufferPointer scene(std::size_t width, std::size_t height, int index);

/// The settings of a track as the program gives them.
NSDictionary trackSettings(std::int64_t width, std::int64_t height);

/// The time of frame `index` as the program gives it: 0, then index + 1.
CMTime frameTime(int index, int frameRate = 25);

/// The three objects of one movie, made as the program makes them, and started.
struct OpenMovie {
    OpenMovie(Movies& movies, const std::string& path, std::int64_t width, std::int64_t height);

    bool append(const BufferPointer& buffer, CMTime time) {
        return adaptor->appendPixelBuffer(buffer.get(), time);
    }
    /// Appends frames 0 and on, each `picture(width, height, index)`. How many were taken.
    int appendFrames(int count, BufferPointer (*picture)(std::size_t, std::size_t, int) = scene,
                     int frameRate = 25);
    void finish(std::function<void()> handler = [] {});

    std::size_t width;
    std::size_t height;
    std::shared_ptr<AVAssetWriter> writer;
    std::shared_ptr<AVAssetWriterInput> input;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor;
    std::optional<NSError> creationError;
    bool hasStarted = false;
};

/// A folder, and one movie in it.
class MovieTest : public testing::Test {
protected:
    AVAssetWriterResult create(const std::string& where) {
        return movies.assetWriterWithURL(NSURL::fileURLWithPath(where), AVFileTypeQuickTimeMovie);
    }
    OpenMovie open(std::int64_t width = 64, std::int64_t height = 48) {
        observer.forget(path);
        return {movies, path, width, height};
    }
    /// A movie of frames of `scene`, to its end.
    void make(int frames, int frameRate = 25, std::int64_t width = 64, std::int64_t height = 48) {
        OpenMovie movie = open(width, height);
        ASSERT_EQ(movie.appendFrames(frames, scene, frameRate), frames);
        finish(movie);
    }
    void finish(OpenMovie& movie) {
        movie.finish();
        ASSERT_EQ(observer.outcome(path), std::nullopt);
    }

    WorkFolder folder;
    RecordingObserver observer;
    Movies movies{observer};
    const std::string path = folder / "m.mov";
};

} // namespace vistrane
