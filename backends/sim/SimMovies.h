#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimDrawing.h"
#include "platform/avfoundation/AVFoundation.h"

namespace vistrane {

class SimFiles;

/// A picture that was handed to an adaptor.
struct SimAppend {
    std::string writer;
    /// As it was when it was handed over; nothing without a buffer.
    std::optional<SimPixels> pixels;
    CMTime time;
    bool accepted = false;
};

/// The movie writers. A movie's file appears when the test lets its writer finish. Any thread.
class SimMovies {
public:
    SimMovies(CallLog& log, SimFiles& files, SimDrawing& drawing);
    ~SimMovies();
    SimMovies(const SimMovies&) = delete;
    SimMovies& operator=(const SimMovies&) = delete;

    /// The outcome of the next creation that has none yet: an error (with a writer beside it or
    /// without), or nothing for success. Without any, creation fails exactly for an existing file.
    void failCreation(NSError error, bool withWriter = false);
    void allowCreation();
    /// The answers to the next questions for readiness; then always yes.
    void answerReadiness(std::vector<bool> answers);
    /// The verdict on the next pictures; then those without a buffer, out of order or outside of
    /// writing are refused, others taken.
    void judgeAppends(std::vector<bool> verdicts);
    /// Called on the writer's thread before a picture is judged, with its number from 0.
    void beforeAppend(std::function<void(std::size_t number)> action);
    /// Called on the writer's thread with each question for readiness, before it is answered.
    void beforeReadiness(std::function<void()> action);

    std::vector<SimAppend> appends() const;
    /// The writers that were told to finish and have not.
    std::size_t finishingWriters() const;
    /// Lets the oldest of them end: its file is there, unless another one has taken the name, and
    /// its handler is called on another thread.
    void finish();

    AVAssetWriterResult makeWriter(const NSURL& url, AVFileType fileType);
    std::shared_ptr<AVAssetWriterInput> makeInput(AVMediaType mediaType,
                                                  const NSDictionary& outputSettings);
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    makeAdaptor(const std::shared_ptr<AVAssetWriterInput>& input, const NSDictionary& attributes);

private:
    friend class SimAssetWriter;
    friend class SimWriterInput;
    friend class SimAdaptor;
    struct Creation {
        std::optional<NSError> error;
        bool withWriter = true;
    };
    /// What the writer, its input and its adaptor share. One thread.
    struct Track {
        std::string writer;
        std::optional<NSError> error;
        bool started = false;
        bool finished = false;
        std::optional<CMTime> lastTime;
    };
    struct Finishing {
        std::string path;
        /// Null for a writer without an input.
        std::shared_ptr<Track> track;
        std::function<void()> handler;
    };

    bool takeReadiness();
    bool judge(CVPixelBufferRef buffer, CMTime time, Track& track);

    CallLog& log_;
    SimFiles& files_;
    SimDrawing& drawing_;
    mutable std::mutex mutex_;
    std::deque<Creation> creations_;
    std::deque<bool> readiness_;
    std::deque<bool> verdicts_;
    std::vector<SimAppend> appends_;
    std::deque<Finishing> finishing_;
    std::function<void(std::size_t)> beforeAppend_;
    std::function<void()> beforeReadiness_;
};

} // namespace vistrane
