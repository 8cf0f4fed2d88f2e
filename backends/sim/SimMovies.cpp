#include "backends/sim/SimMovies.h"

#include <utility>

#include "backends/sim/SimFiles.h"
#include "backends/sim/SimRole.h"

namespace vistrane {

namespace {

std::string describe(CMTime time) {
    return std::to_string(time.value) + "/" + std::to_string(time.timescale);
}

/// Whether `a` lies before `b`; both are valid.
bool isBefore(CMTime a, CMTime b) {
    return static_cast<double>(a.value) / a.timescale < static_cast<double>(b.value) / b.timescale;
}

NSError nameTaken() {
    return {"SimMovies", 17, "There is a file of that name already."};
}

} // namespace

class SimWriterInput final : public AVAssetWriterInput, public SimObject {
public:
    SimWriterInput(CallLog& log, const std::string& name, SimMovies& movies)
        : SimObject(log, name), track(std::make_shared<SimMovies::Track>()), movies_(movies) {}

    void setExpectsMediaDataInRealTime(bool realTime) override {
        call("setExpectsMediaDataInRealTime: " + yesNo(realTime));
    }
    bool isReadyForMoreMediaData() override {
        call("isReadyForMoreMediaData");
        return movies_.takeReadiness();
    }
    void markAsFinished() override {
        call("markAsFinished");
        track->finished = true;
    }

    std::shared_ptr<SimMovies::Track> track;

private:
    SimMovies& movies_;
};

class SimAdaptor final : public AVAssetWriterInputPixelBufferAdaptor, public SimObject {
public:
    SimAdaptor(CallLog& log, const std::string& name, SimMovies& movies,
               std::shared_ptr<SimWriterInput> input)
        : SimObject(log, name), movies_(movies), input_(std::move(input)), pool_(name + ".pool") {}

    AVAssetWriterInput& assetWriterInput() override { return *input_; }

    bool appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) override {
        const std::optional<SimPixels> pixels = movies_.drawing_.pixels(buffer);
        call("appendPixelBuffer: " +
             (pixels   ? pixels->name
              : buffer ? "(released)"
                       : "(null)") +
             " withPresentationTime: " + describe(time));
        if (pixels && pixels->isLocked) {
            log_.misuse(name() + " appendPixelBuffer: " + pixels->name + " is locked");
        }
        return movies_.judge(buffer, time, *input_->track);
    }

    CVPixelBufferPoolRef pixelBufferPool() override {
        return input_->track->started ? &pool_ : nullptr;
    }

private:
    SimMovies& movies_;
    std::shared_ptr<SimWriterInput> input_;
    SimPixelBufferPool pool_;
};

class SimAssetWriter final : public AVAssetWriter, public SimObject {
public:
    SimAssetWriter(CallLog& log, const std::string& name, SimMovies& movies, std::string path)
        : SimObject(log, name), movies_(movies), path_(std::move(path)) {}

    void addInput(std::shared_ptr<AVAssetWriterInput> input) override {
        call("addInput: " + nameOf(input.get()));
        input_ = std::dynamic_pointer_cast<SimWriterInput>(input);
        if (input_) {
            input_->track->writer = name();
        }
    }
    bool startWriting() override {
        call("startWriting");
        if (!input_) {
            log_.misuse(name() + " startWriting: there is no input");
            return false;
        }
        input_->track->started = true;
        return true;
    }
    void startSessionAtSourceTime(CMTime time) override {
        call("startSessionAtSourceTime: " + describe(time));
    }
    std::optional<NSError> error() const override {
        log_.recordGetter(name() + " error");
        return input_ ? input_->track->error : std::nullopt;
    }
    void finishWritingWithCompletionHandler(std::function<void()> handler) override {
        call("finishWritingWithCompletionHandler");
        const std::lock_guard lock(movies_.mutex_);
        if (!isFinishing_) {
            movies_.finishing_.push_back(
                {path_, input_ ? input_->track : nullptr, std::move(handler)});
        }
        isFinishing_ = true;
    }

private:
    SimMovies& movies_;
    std::string path_;
    std::shared_ptr<SimWriterInput> input_;
    bool isFinishing_ = false;
};

SimMovies::SimMovies(CallLog& log, SimFiles& files, SimDrawing& drawing)
    : log_(log), files_(files), drawing_(drawing) {}

SimMovies::~SimMovies() = default;

void SimMovies::failCreation(NSError error, bool withWriter) {
    const std::lock_guard lock(mutex_);
    creations_.push_back({std::move(error), withWriter});
}

void SimMovies::allowCreation() {
    const std::lock_guard lock(mutex_);
    creations_.push_back({});
}

void SimMovies::answerReadiness(std::vector<bool> answers) {
    const std::lock_guard lock(mutex_);
    readiness_.insert(readiness_.end(), answers.begin(), answers.end());
}

void SimMovies::judgeAppends(std::vector<bool> verdicts) {
    const std::lock_guard lock(mutex_);
    verdicts_.insert(verdicts_.end(), verdicts.begin(), verdicts.end());
}

void SimMovies::beforeAppend(std::function<void(std::size_t)> action) {
    beforeAppend_ = std::move(action);
}

void SimMovies::beforeReadiness(std::function<void()> action) {
    beforeReadiness_ = std::move(action);
}

std::vector<SimAppend> SimMovies::appends() const {
    const std::lock_guard lock(mutex_);
    return appends_;
}

std::size_t SimMovies::finishingWriters() const {
    const std::lock_guard lock(mutex_);
    return finishing_.size();
}

void SimMovies::finish() {
    Finishing ended;
    {
        const std::lock_guard lock(mutex_);
        if (finishing_.empty()) {
            log_.misuse("finish: no writer was told to finish");
            return;
        }
        ended = std::move(finishing_.front());
        finishing_.pop_front();
    }
    if (!files_.exists(ended.path)) {
        files_.write(ended.path, "movie");
    } else if (ended.track) {
        ended.track->error = nameTaken();
    }
    const ScopedSimRole role = ScopedSimRole::globalQueue();
    ended.handler();
}

AVAssetWriterResult SimMovies::makeWriter(const NSURL& url, AVFileType fileType) {
    const std::string call = "assetWriterWithURL: " + url.absoluteString() + " fileType: " +
                             (fileType == AVFileTypeQuickTimeMovie ? "QuickTimeMovie" : "other") +
                             " -> ";
    Creation creation;
    {
        const std::lock_guard lock(mutex_);
        if (!creations_.empty()) {
            creation = std::move(creations_.front());
            creations_.pop_front();
        } else if (files_.exists(url.path())) {
            creation = {nameTaken(), false};
        }
    }
    if (creation.error && !creation.withWriter) {
        log_.record(call + "error");
        return {nullptr, creation.error};
    }
    auto writer =
        std::make_shared<SimAssetWriter>(log_, log_.nextName("writer"), *this, url.path());
    log_.record(call + writer->name() + (creation.error ? " and error" : ""));
    return {writer, creation.error};
}

std::shared_ptr<AVAssetWriterInput> SimMovies::makeInput(AVMediaType mediaType,
                                                         const NSDictionary& outputSettings) {
    auto input = std::make_shared<SimWriterInput>(log_, log_.nextName("writerInput"), *this);
    log_.record(std::string("assetWriterInputWithMediaType: ") +
                (mediaType == AVMediaTypeVideo ? "Video" : "other") +
                " outputSettings: " + vistrane::describe(outputSettings) + " -> " + input->name());
    return input;
}

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
SimMovies::makeAdaptor(const std::shared_ptr<AVAssetWriterInput>& input,
                       const NSDictionary& attributes) {
    auto adaptor = std::make_shared<SimAdaptor>(log_, log_.nextName("adaptor"), *this,
                                                std::dynamic_pointer_cast<SimWriterInput>(input));
    log_.record("adaptorWithAssetWriterInput: " + nameOf(input.get()) +
                " sourcePixelBufferAttributes: " + vistrane::describe(attributes) + " -> " +
                adaptor->name());
    return adaptor;
}

bool SimMovies::takeReadiness() {
    if (beforeReadiness_) {
        beforeReadiness_();
    }
    const std::lock_guard lock(mutex_);
    if (readiness_.empty()) {
        return true;
    }
    const bool ready = readiness_.front();
    readiness_.pop_front();
    return ready;
}

bool SimMovies::judge(CVPixelBufferRef buffer, CMTime time, Track& track) {
    if (beforeAppend_) {
        beforeAppend_(appends().size());
    }
    SimAppend append{track.writer, drawing_.pixels(buffer), time, false};
    const bool isOpen = track.started && !track.finished;
    if (!isOpen) {
        log_.misuse(track.writer + ": a picture outside of writing");
    }
    const bool inOrder =
        CMTimeIsValid(time) && (!track.lastTime || isBefore(*track.lastTime, time));
    const std::lock_guard lock(mutex_);
    append.accepted = append.pixels.has_value() && inOrder && isOpen;
    if (!verdicts_.empty()) {
        append.accepted = verdicts_.front();
        verdicts_.pop_front();
    }
    if (append.accepted) {
        track.lastTime = time;
    } else {
        track.error = NSError{"SimMovies", append.pixels ? 2 : 1,
                              append.pixels ? "The picture was refused." : "There is no picture."};
    }
    appends_.push_back(append);
    return append.accepted;
}

} // namespace vistrane
