#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimPictures.h"
#include "platform/avfoundation/AVFoundation.h"

namespace vistrane {

class SimFiles;
class SimWriterInput;

/// A picture that was given to an adaptor.
struct SimAppend {
    /// A copy of the buffer's contents at that moment; nothing without a buffer.
    std::optional<SimPixels> pixels;
    CMTime time;
    bool accepted = false;
};

/// The movie half of AVFoundation. A movie's file appears when the test lets its writer finish.
/// Any thread.
class SimMovies : public virtual AVFoundation {
public:
    SimMovies(CallLog& log, SimFiles& files, SimDrawing& drawing)
        : log_(log), files_(files), drawing_(drawing) {}

    AVAssetWriterResult assetWriterWithURL(const NSURL& url, AVFileType fileType) override;
    std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(AVMediaType mediaType,
                                  const NSDictionary& outputSettings) override;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes) override;

    struct Creation {
        std::optional<NSError> error;
        bool withWriter = true;
    };
    // The script; set it while no writer works.
    /// The outcomes of the next creations: an error (with a writer beside it or without), or
    /// success. Afterwards creation fails exactly for an existing file.
    std::deque<Creation> creations;
    /// The next answers to `isReadyForMoreMediaData`; afterwards always yes.
    std::deque<bool> readiness;
    /// Whether the next pictures are accepted. Afterwards those without a buffer, out of order or
    /// outside of writing are refused, others accepted.
    std::deque<bool> verdicts;
    /// Called on the writer's thread before a picture is judged, with its number from 0.
    std::function<void(std::size_t number)> beforeAppend = [](std::size_t) {};
    /// Called on the writer's thread before each answer about readiness.
    std::function<void()> beforeReadiness = [] {};

    std::vector<SimAppend> appends() const {
        const std::lock_guard lock(mutex_);
        return appends_;
    }
    /// The writers that were told to finish and have not.
    std::size_t finishingWriters() const {
        const std::lock_guard lock(mutex_);
        return finishing_.size();
    }
    /// Finishes the oldest of them: its file appears, unless the name was taken meanwhile, and its
    /// handler is called on another thread.
    void finish();

private:
    friend class SimAssetWriter;
    friend class SimWriterInput;
    friend class SimAdaptor;
    struct Finishing {
        std::string path;
        /// Null for a writer without an input.
        std::shared_ptr<SimWriterInput> input;
        std::function<void()> handler;
    };

    /// Takes the next scripted answer.
    template <class Answer>
    static Answer takeFirst(std::deque<Answer>& answers, Answer otherwise) {
        if (answers.empty()) {
            return otherwise;
        }
        Answer first = std::move(answers.front());
        answers.pop_front();
        return first;
    }
    bool takeReadiness() {
        beforeReadiness();
        const std::lock_guard lock(mutex_);
        return takeFirst(readiness, true);
    }
    bool judge(CVPixelBufferRef buffer, CMTime time, SimWriterInput& input);

    CallLog& log_;
    SimFiles& files_;
    SimDrawing& drawing_;
    mutable std::mutex mutex_;
    std::vector<SimAppend> appends_;
    std::deque<Finishing> finishing_;
};

} // namespace vistrane
