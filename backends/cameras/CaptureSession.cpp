#include "backends/cameras/CaptureSession.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "backends/cameras/YuvConversion.h"
#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureData.h"

namespace vistrane {

namespace {

class Photo final : public AVCapturePhoto {
public:
    explicit Photo(std::shared_ptr<const PictureSource> picture)
        : data_(std::make_shared<PictureData>(std::move(picture))) {}
    std::shared_ptr<NSData> fileDataRepresentation() const override { return data_; }

private:
    std::shared_ptr<NSData> data_;
};

/// The sample's picture, AYUV or BGRx, as BGRx. Empty if there is none.
PreviewPicture pictureOf(GstSample* sample) {
    const GstCaps* const caps = sample != nullptr ? gst_sample_get_caps(sample) : nullptr;
    GstVideoInfo info;
    GstVideoFrame frame;
    if (caps == nullptr || !gst_video_info_from_caps(&info, caps) ||
        !gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ)) {
        return {};
    }
    const auto width = static_cast<std::size_t>(GST_VIDEO_FRAME_WIDTH(&frame));
    const auto height = static_cast<std::size_t>(GST_VIDEO_FRAME_HEIGHT(&frame));
    const auto conversion = GST_VIDEO_INFO_IS_YUV(&info) ? YuvConversion::of(info.colorimetry)
                                                         : std::optional<YuvConversion>();
    const std::size_t stride = 4 * width;
    auto memory = ByteArray::ofLength(stride * height);
    if (!memory) {
        gst_video_frame_unmap(&frame);
        return {};
    }
    const auto pixels = std::make_shared<ByteArray>(std::move(*memory));
    for (std::size_t y = 0; y < height; ++y) {
        const auto* row = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) +
                          y * static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
        if (conversion) {
            conversion->toBgrx(row, width, pixels->data() + y * stride);
        } else {
            std::memcpy(pixels->data() + y * stride, row, stride);
        }
    }
    gst_video_frame_unmap(&frame);
    PreviewPicture picture;
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    picture.stride = stride;
    picture.pixels = {pixels, pixels->data()};
    return picture;
}

} // namespace

CameraDevice::CameraDevice(Camera camera) : camera_(std::move(camera)) {}

bool CameraDevice::hasMediaType(AVMediaType type) const {
    return offersMediaType(*camera_.modes, type);
}

std::string CameraDevice::localizedName() const {
    return camera_.facts.name;
}

bool CameraDevice::supportsAVCaptureSessionPreset(AVCaptureSessionPreset preset) const {
    return preset == AVCaptureSessionPresetPhoto ? photoMode(*camera_.modes) != nullptr
                                                 : movingPictureMode(*camera_.modes) != nullptr;
}

const Camera& CameraDevice::camera() const {
    return camera_;
}

CameraInput::CameraInput(std::shared_ptr<AVCaptureDevice> device, Camera camera)
    : device_(std::move(device)), camera_(std::move(camera)) {}

std::shared_ptr<AVCaptureDevice> CameraInput::device() const {
    return device_;
}

const Camera& CameraInput::camera() const {
    return camera_;
}

struct CaptureSession::Shared : std::enable_shared_from_this<CaptureSession::Shared> {
    Shared(std::shared_ptr<MainThreadGate> queue, CameraObserver& theObserver)
        : mainQueue(std::move(queue)), observer(theObserver) {}

    const std::shared_ptr<MainThreadGate> mainQueue;
    CameraObserver& observer;
    std::mutex mutex;
    /// Pending requests by number. Guarded by the mutex.
    std::map<std::uint64_t, Waiting> waiting;
    std::atomic<bool> previewIsQueued{false};
    /// Main thread only.
    std::vector<std::weak_ptr<MediaPreviewLayer>> layers;

    void deliver(std::uint64_t request, StillOutcome outcome);
    void preview(GstSample* sample);
    void show(const PreviewPicture& picture);
};

void CaptureSession::Shared::deliver(std::uint64_t request, StillOutcome outcome) {
    std::unique_lock lock(mutex);
    const auto found = waiting.find(request);
    if (found == waiting.end()) {
        return;
    }
    const Waiting answered = found->second;
    waiting.erase(found);
    lock.unlock();
    mainQueue->post([answered, outcome = std::move(outcome), &observer = observer] {
        const auto output = answered.output.lock();
        if (!output) {
            return;
        }
        const Photo photo(outcome.picture);
        observer.stillIsBeingHandled();
        answered.delegate->captureOutputDidFinishProcessingPhoto(
            *output, outcome.error ? nullptr : &photo, outcome.error);
        observer.stillWasHandled();
    });
}

void CaptureSession::Shared::preview(GstSample* sample) {
    const bool mustArrive = sample == nullptr;
    if (previewIsQueued.exchange(true) && !mustArrive) {
        return;
    }
    mainQueue->post([shared = shared_from_this(), picture = pictureOf(sample)] {
        shared->previewIsQueued = false;
        shared->show(picture);
    });
}

void CaptureSession::Shared::show(const PreviewPicture& picture) {
    const auto current = layers;
    for (const auto& weak : current) {
        if (const auto layer = weak.lock()) {
            layer->show(picture);
        }
    }
}

CaptureSession::CaptureSession(std::shared_ptr<CameraList> list, CameraObserver& observer,
                               const CameraOptions& options,
                               std::shared_ptr<MainThreadGate> mainQueue)
    : shared_(std::make_shared<Shared>(std::move(mainQueue), observer)),
      engine_(std::move(list), observer, options,
              {[shared = shared_](std::uint64_t request, StillOutcome outcome) {
                   shared->deliver(request, std::move(outcome));
               },
               [shared = shared_](GstSample* sample) { shared->preview(sample); }}) {}

CaptureSession::~CaptureSession() = default;

void CaptureSession::setSessionPreset(AVCaptureSessionPreset preset) {
    preset_ = preset;
}

bool CaptureSession::canAddOutput(const AVCapturePhotoOutput& output) const {
    const auto* photoOutput = dynamic_cast<const PhotoOutput*>(&output);
    return photoOutput != nullptr && !photoOutput->isAttached() && !output_;
}

void CaptureSession::addOutput(std::shared_ptr<AVCapturePhotoOutput> output) {
    if (!output || !canAddOutput(*output)) {
        return;
    }
    std::dynamic_pointer_cast<PhotoOutput>(output)->attach(weak_from_this());
    output_ = std::move(output);
}

std::vector<std::shared_ptr<AVCaptureDeviceInput>> CaptureSession::inputs() const {
    return inputs_;
}

void CaptureSession::addInput(std::shared_ptr<AVCaptureDeviceInput> input) {
    if (std::dynamic_pointer_cast<CameraInput>(input)) {
        inputs_.push_back(std::move(input));
    }
}

void CaptureSession::removeInput(const AVCaptureDeviceInput& input) {
    const auto found = std::find_if(inputs_.begin(), inputs_.end(),
                                    [&](const auto& own) { return own.get() == &input; });
    if (found == inputs_.end()) {
        return;
    }
    if (found == inputs_.begin()) {
        stopRunning();
    }
    inputs_.erase(found);
}

std::optional<NSError> CaptureSession::open(const Camera& camera) {
    return engine_.open(camera, preset_);
}

void CaptureSession::startRunning() {
    if (inputs_.empty() || isRunning()) {
        return;
    }
    engine_.start(std::static_pointer_cast<CameraInput>(inputs_.front())->camera(), preset_);
    isRunning_ = true;
}

void CaptureSession::stopRunning() {
    isRunning_ = false;
    if (engine_.isRunning()) {
        engine_.stop();
    }
}

bool CaptureSession::isRunning() const {
    return isRunning_ && engine_.isRunning();
}

void CaptureSession::requestStill(std::shared_ptr<AVCapturePhotoOutput> output,
                                  AVCapturePhotoCaptureDelegate& delegate) {
    const std::uint64_t request = ++lastRequest_;
    {
        std::lock_guard lock(shared_->mutex);
        shared_->waiting[request] = Waiting{output, &delegate};
    }
    shared_->observer.stillWasRequested();
    engine_.requestStill(request);
}

bool CaptureSession::offers(AVMediaType type) const {
    return !inputs_.empty() && inputs_.front()->device()->hasMediaType(type);
}

std::shared_ptr<MediaPreviewLayer> CaptureSession::makeLayer() {
    auto layer = std::make_shared<MediaPreviewLayer>([weak = weak_from_this()](bool wanted) {
        if (const auto session = weak.lock()) {
            session->preview(wanted);
        }
    });
    std::erase_if(shared_->layers, [](const auto& other) { return other.expired(); });
    shared_->layers.push_back(layer);
    return layer;
}

void CaptureSession::preview(bool wanted) {
    engine_.wantPreview(wanted);
}

} // namespace vistrane
