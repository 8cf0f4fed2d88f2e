#include "backends/sim/SimMovies.h"

#include <utility>

#include "backends/sim/SimFiles.h"
#include "backends/sim/SimThreads.h"

namespace vistrane {

namespace {

std::string text(CMTime time) {
    return filled("%/%", {vistrane::text(time.value), vistrane::text(time.timescale)});
}

NSError nameTaken() {
    return {"SimMovies", 17, "There is a file of that name already."};
}

} // namespace

class SimWriterInput final : public SimOf<AVAssetWriterInput> {
public:
    SimWriterInput(CallLog& log, const std::string& name, SimMovies& movies)
        : SimOf(log, name), movies_(movies) {}

    void setExpectsMediaDataInRealTime(bool realTime) override {
        call("setExpectsMediaDataInRealTime: %", realTime);
    }
    bool isReadyForMoreMediaData() override {
        call("isReadyForMoreMediaData");
        return movies_.takeReadiness();
    }
    void markAsFinished() override {
        call("markAsFinished");
        finished = true;
    }

    // The state of its track. One thread.
    std::optional<NSError> error;
    bool started = false;
    bool finished = false;
    std::optional<CMTime> lastTime;

private:
    SimMovies& movies_;
};

class SimAdaptor final : public SimOf<AVAssetWriterInputPixelBufferAdaptor> {
public:
    SimAdaptor(CallLog& log, const std::string& name, SimMovies& movies,
               std::shared_ptr<SimWriterInput> input)
        : SimOf(log, name), movies_(movies), input_(std::move(input)) {
        pool_.name = name + ".pool";
    }

    AVAssetWriterInput& assetWriterInput() override { return *input_; }
    bool appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) override {
        const std::optional<SimPixels> pixels = movies_.drawing_.pixels(buffer);
        call("appendPixelBuffer: % withPresentationTime: %",
             pixels   ? pixels->name
             : buffer ? "(released)"
                      : "(null)",
             text(time));
        if (pixels && pixels->locks > 0) {
            log_.misuse(name() + " appendPixelBuffer: " + pixels->name + " is locked");
        }
        return movies_.judge(buffer, time, *input_);
    }
    CVPixelBufferPoolRef pixelBufferPool() override { return input_->started ? &pool_ : nullptr; }

private:
    SimMovies& movies_;
    std::shared_ptr<SimWriterInput> input_;
    SimPixelBufferPool pool_;
};

class SimAssetWriter final : public SimOf<AVAssetWriter> {
public:
    SimAssetWriter(CallLog& log, const std::string& name, SimMovies& movies, std::string path)
        : SimOf(log, name), movies_(movies), path_(std::move(path)) {}

    void addInput(std::shared_ptr<AVAssetWriterInput> input) override {
        call("addInput: %", input);
        input_ = std::dynamic_pointer_cast<SimWriterInput>(input);
    }
    bool startWriting() override {
        call("startWriting");
        if (!input_) {
            log_.misuse(name() + " startWriting: there is no input");
            return false;
        }
        input_->started = true;
        return true;
    }
    void startSessionAtSourceTime(CMTime time) override {
        call("startSessionAtSourceTime: %", text(time));
    }
    std::optional<NSError> error() const override { return input_ ? input_->error : std::nullopt; }
    void finishWritingWithCompletionHandler(std::function<void()> handler) override {
        call("finishWritingWithCompletionHandler");
        const std::lock_guard lock(movies_.mutex_);
        movies_.finishing_.push_back({path_, input_, std::move(handler)});
    }

private:
    SimMovies& movies_;
    std::string path_;
    std::shared_ptr<SimWriterInput> input_;
};

void SimMovies::finish() {
    Finishing ended;
    {
        const std::lock_guard lock(mutex_);
        if (finishing_.empty()) {
            log_.misuse("finish: no writer was told to finish");
            return;
        }
        ended = takeFirst(finishing_, {});
    }
    if (!files_.exists(ended.path)) {
        files_.write(ended.path, "movie");
    } else if (ended.input) {
        ended.input->error = nameTaken();
    }
    const SimRole role = SimRole::globalQueue();
    ended.handler();
}

AVAssetWriterResult SimMovies::assetWriterWithURL(const NSURL& url, AVFileType fileType) {
    Creation creation;
    {
        const std::lock_guard lock(mutex_);
        const bool isTaken = files_.exists(url.path());
        creation = takeFirst(creations, isTaken ? Creation{nameTaken(), false} : Creation{});
    }
    std::shared_ptr<SimAssetWriter> writer;
    if (creation.withWriter) {
        writer = std::make_shared<SimAssetWriter>(log_, log_.nextName("writer"), *this, url.path());
    }
    log_.record("assetWriterWithURL: % fileType: % -> %%", url.absoluteString(),
                fileType == AVFileTypeQuickTimeMovie ? "QuickTimeMovie" : "other",
                writer ? writer->name() : "error", writer && creation.error ? " and error" : "");
    return {writer, creation.error};
}

std::shared_ptr<AVAssetWriterInput>
SimMovies::assetWriterInputWithMediaType(AVMediaType mediaType,
                                         const NSDictionary& outputSettings) {
    auto input = std::make_shared<SimWriterInput>(log_, log_.nextName("writerInput"), *this);
    log_.record("assetWriterInputWithMediaType: % outputSettings: % -> %",
                mediaType == AVMediaTypeVideo ? "Video" : "other", outputSettings, input);
    return input;
}

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
SimMovies::assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
    std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes) {
    auto adaptor = std::make_shared<SimAdaptor>(log_, log_.nextName("adaptor"), *this,
                                                std::dynamic_pointer_cast<SimWriterInput>(input));
    log_.record("adaptorWithAssetWriterInput: % sourcePixelBufferAttributes: % -> %", input,
                attributes, adaptor);
    return adaptor;
}

bool SimMovies::judge(CVPixelBufferRef buffer, CMTime time, SimWriterInput& input) {
    beforeAppend(appends().size());
    SimAppend append{drawing_.pixels(buffer), time, false};
    const bool isOpen = input.started && !input.finished;
    if (!isOpen) {
        log_.misuse(input.name() + ": a picture outside of writing");
    }
    const auto seconds = [](CMTime t) { return static_cast<double>(t.value) / t.timescale; };
    const bool isInOrder =
        CMTimeIsValid(time) && (!input.lastTime || seconds(*input.lastTime) < seconds(time));
    const std::lock_guard lock(mutex_);
    append.accepted = takeFirst(verdicts, append.pixels.has_value() && isInOrder && isOpen);
    if (append.accepted) {
        input.lastTime = time;
    } else if (append.pixels) {
        input.error.emplace(NSError{"SimMovies", 2, "The picture was refused."});
    } else {
        input.error.emplace(NSError{"SimMovies", 1, "There is no picture."});
    }
    appends_.push_back(append);
    return append.accepted;
}

} // namespace vistrane
