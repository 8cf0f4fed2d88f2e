#include "backends/cameras/CapturePipeline.h"

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <initializer_list>
#include <mutex>
#include <utility>

#include <gst/app/gstappsink.h>
#include <gst/base/gstbasesrc.h>

#include "backends/cameras/PipeWireConnection.h"
#include "backends/cameras/demo_source.h"
#include "backends/posix/free_memory.h"
#include "backends/posix/threads.h"

namespace vistrane {

namespace {

constexpr int previewSide = 640;
constexpr int previewRate = 30;

/// The user data of GStreamer callbacks. Freed by `forget`.
using SharedEvents = std::shared_ptr<const PipelineEvents>;

/// ThreadSanitizer cannot see how GStreamer synchronises passing the user data to its threads. This
/// counter makes it visible.
std::atomic<unsigned> handovers{0};

gpointer keep(const SharedEvents& events) {
    auto* kept = new SharedEvents(events);
    handovers.fetch_add(1, std::memory_order_release);
    return kept;
}

void forget(gpointer kept) {
    delete static_cast<SharedEvents*>(kept);
}

const PipelineEvents& eventsOf(gpointer kept) {
    static_cast<void>(handovers.load(std::memory_order_acquire));
    return **static_cast<SharedEvents*>(kept);
}

GstPadProbeReturn onPicture(GstPad*, GstPadProbeInfo* info, gpointer kept) {
    eventsOf(kept).pictureArrived(GST_BUFFER_PTS(GST_PAD_PROBE_INFO_BUFFER(info)));
    return GST_PAD_PROBE_OK;
}

/// Discards the request to renegotiate the format that a valve sends when it opens. The format
/// before the tee is fixed, and PipeWire's source would release its camera to renegotiate.
GstPadProbeReturn onUpstreamEvent(GstPad*, GstPadProbeInfo* info, gpointer) {
    return GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_RECONFIGURE
               ? GST_PAD_PROBE_DROP
               : GST_PAD_PROBE_OK;
}

GstFlowReturn onStill(GstAppSink* sink, gpointer kept) {
    const GstPointer<GstSample> sample(gst_app_sink_pull_sample(sink));
    if (sample) {
        eventsOf(kept).still(sample.get());
    }
    return GST_FLOW_OK;
}

GstFlowReturn onPreview(GstAppSink* sink, gpointer kept) {
    const GstPointer<GstSample> sample(gst_app_sink_pull_sample(sink));
    if (sample) {
        eventsOf(kept).preview(sample.get());
    }
    return GST_FLOW_OK;
}

std::string errorText(GstMessage* message) {
    GError* error = nullptr;
    gchar* details = nullptr;
    gst_message_parse_error(message, &error, &details);
    const GstPointer<GError> owned(error);
    const GstPointer<gchar> ownedDetails(details);
    // The message itself is then "Internal data stream error".
    if (details != nullptr && std::strstr(details, "not-negotiated") != nullptr) {
        return "it refuses its picture format";
    }
    const GstPointer<gchar> line(
        g_strdelimit(g_utf8_make_valid(error != nullptr ? error->message : "", -1), "\r\n", ' '));
    return line.get();
}

GstBusSyncReply onMessage(GstBus*, GstMessage* message, gpointer kept) {
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        eventsOf(kept).failed(errorText(message));
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        eventsOf(kept).failed("the stream has ended");
    }
    // Nothing reads the bus, so messages that are not dropped here would pile up.
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void onDecoded(GstElement*, GstPad* decoded, gpointer next) {
    const GstPointer<GstPad> sink(gst_element_get_static_pad(GST_ELEMENT(next), "sink"));
    const GstPointer<GstCaps> caps(gst_pad_query_caps(decoded, nullptr));
    const bool isVideo =
        caps && !gst_caps_is_empty(caps.get()) && !gst_caps_is_any(caps.get()) &&
        gst_structure_has_name(gst_caps_get_structure(caps.get(), 0), "video/x-raw");
    if (isVideo && !gst_pad_is_linked(sink.get())) {
        gst_pad_link(decoded, sink.get());
    }
}

/// Adds elements to a pipeline and keeps the first error.
class Builder {
public:
    explicit Builder(GstElement* pipeline) : pipeline_(GST_BIN(pipeline)) {}

    /// The pipeline owns the element. Null if the system lacks the factory.
    GstElement* add(const char* factory) {
        GstElement* element = gst_element_factory_make(factory, nullptr);
        if (element == nullptr) {
            note(std::string("GStreamer's element '") + factory + "' is not installed");
            return nullptr;
        }
        return addMade(element);
    }

    GstElement* addMade(GstElement* element) {
        return element != nullptr && gst_bin_add(pipeline_, element) ? element : nullptr;
    }

    GstElement* addFilter(const GstCaps* caps) {
        GstElement* filter = add("capsfilter");
        if (filter != nullptr) {
            g_object_set(filter, "caps", caps, nullptr);
        }
        return filter;
    }

    void link(std::initializer_list<GstElement*> chain) {
        GstElement* before = nullptr;
        for (GstElement* element : chain) {
            if (element == nullptr) {
                note("an element could not be created");
                return;
            }
            if (before != nullptr && !gst_element_link(before, element)) {
                note("its elements cannot be linked");
                return;
            }
            before = element;
        }
    }

    void note(const std::string& reason) {
        if (reason_.empty()) {
            reason_ = reason;
        }
    }
    const std::string& reason() const { return reason_; }

private:
    GstBin* pipeline_;
    std::string reason_;
};

bool hasProperty(GstElement* element, const char* name) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(element), name) != nullptr;
}

/// A camera's element and the connection that must outlive it.
struct Source {
    /// Floating; null if it cannot be made.
    GstElement* element = nullptr;
    std::shared_ptr<PipeWireConnection> connection;
};

Source sourceOf(const Camera& camera) {
    if (camera.isDemo()) {
        return {demoSource(camera.showsBars), nullptr};
    }
    Source source{gst_device_create_element(camera.device.get(), nullptr), nullptr};
    if (source.element == nullptr) {
        return source;
    }
    if (hasProperty(source.element, "do-timestamp")) {
        g_object_set(source.element, "do-timestamp", TRUE, nullptr);
    }
    if (camera.facts.provider == pipeWireProvider) {
        // When the camera vanishes, its pictures are unmapped even while the preview scales one.
        g_object_set(source.element, "always-copy", TRUE, nullptr);
        source.connection = std::make_shared<PipeWireConnection>();
        // Otherwise the session manager would move the stream to another camera.
        const GstPointer<GstStructure> properties(gst_structure_new(
            "props", "node.dont-reconnect", G_TYPE_STRING, "true", "node.dont-fallback",
            G_TYPE_STRING, "true", "node.dont-move", G_TYPE_STRING, "true", nullptr));
        g_object_set(source.element, "stream-properties", properties.get(), "fd",
                     source.connection->file(), nullptr);
    }
    return source;
}

GstElement* addQueue(Builder& builder) {
    GstElement* queue = builder.add("queue");
    if (queue != nullptr) {
        gst_util_set_object_arg(G_OBJECT(queue), "leaky", "downstream");
        g_object_set(queue, "max-size-buffers", 1U, "max-size-bytes", 0U, "max-size-time",
                     G_GUINT64_CONSTANT(0), nullptr);
    }
    return queue;
}

GstElement* addValve(Builder& builder) {
    GstElement* valve = builder.add("valve");
    if (valve != nullptr) {
        g_object_set(valve, "drop", TRUE, nullptr);
    }
    return valve;
}

GstElement* addSink(Builder& builder, const char* caps, const SharedEvents& events,
                    GstFlowReturn (*newSample)(GstAppSink*, gpointer)) {
    GstElement* sink = builder.add("appsink");
    if (sink == nullptr) {
        return nullptr;
    }
    const GstPointer<GstCaps> wanted(gst_caps_from_string(caps));
    g_object_set(sink, "caps", wanted.get(), "sync", FALSE, "async", FALSE, "max-buffers", 1U,
                 "drop", TRUE, "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = newSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, keep(events), forget);
    return sink;
}

} // namespace

struct CapturePipeline::Elements {
    SharedEvents events;
    std::shared_ptr<PipeWireConnection> connection;
    GstPointer<GstElement> pipeline;
    GstPointer<GstElement> source;
    /// Null if stills need no decoder.
    GstPointer<GstElement> stillValve;
    GstPointer<GstElement> previewValve;

    std::mutex mutex;
    std::condition_variable changed;
    bool wasStarted = false;
    bool starting = false;
    std::atomic<bool> stopping{false};
    std::atomic<bool> ended{false};

    ~Elements();
    void start();
    void end();
    void unblockSource();
};

/// Pictures that the elements hold are freed with them.
CapturePipeline::Elements::~Elements() {
    stillValve.reset();
    previewValve.reset();
    source.reset();
    pipeline.reset();
    returnFreeMemory();
}

void CapturePipeline::Elements::start() {
    std::unique_lock lock(mutex);
    const bool wanted = !stopping;
    lock.unlock();
    const bool works = wanted && gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) !=
                                     GST_STATE_CHANGE_FAILURE;
    lock.lock();
    starting = false;
    changed.notify_all();
    const bool mustTell = !works && !stopping;
    lock.unlock();
    if (mustTell) {
        events->failed("it cannot be started");
    }
}

void CapturePipeline::Elements::end() {
    std::unique_lock lock(mutex);
    stopping = true;
    while (starting) {
        unblockSource();
        changed.wait_for(lock, std::chrono::milliseconds(10), [this] { return !starting; });
    }
    lock.unlock();
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    ended = true;
}

/// Unblocks the start of PipeWire's source, which waits for the link to its camera for up to half a
/// minute and holds the lock that every change of state needs. Call it repeatedly, because the
/// source clears the request when its start proceeds.
void CapturePipeline::Elements::unblockSource() {
    if (source && GST_IS_BASE_SRC(source.get()) && GST_STATE(source.get()) >= GST_STATE_READY) {
        auto* base = GST_BASE_SRC(source.get());
        // Sources that never block, such as the demo's, lack this method.
        if (const auto unlock = GST_BASE_SRC_GET_CLASS(base)->unlock) {
            unlock(base);
        }
    }
}

namespace {

void addStillBranch(Builder& builder, GstElement* tee, bool isJpeg, const SharedEvents& events,
                    GstPointer<GstElement>& valve) {
    GstElement* sink = addSink(builder, "video/x-raw", events, onStill);
    if (!isJpeg) {
        builder.link({tee, sink});
        return;
    }
    GstElement* made = addValve(builder);
    builder.link({tee, made, addQueue(builder), builder.add("jpegdec"), sink});
    if (made != nullptr) {
        valve = retained(made);
    }
}

void addPreviewBranch(Builder& builder, GstElement* tee, bool isJpeg, const SharedEvents& events,
                      GstPointer<GstElement>& valve) {
    GstElement* made = addValve(builder);
    GstElement* queue = addQueue(builder);
    GstElement* rate = builder.add("videorate");
    if (rate != nullptr) {
        g_object_set(rate, "drop-only", TRUE, "max-rate", previewRate, nullptr);
    }
    GstElement* scale = builder.add("videoscale");
    GstElement* convert = builder.add("videoconvert");
    // Y'CbCr stays what it is: `YuvConversion` is more exact.
    const std::string caps = "video/x-raw,format={AYUV,BGRx},pixel-aspect-ratio=1/1,width=[1," +
                             std::to_string(previewSide) + "],height=[1," +
                             std::to_string(previewSide) + "]";
    GstElement* sink = addSink(builder, caps.c_str(), events, onPreview);
    if (isJpeg) {
        builder.link({tee, made, queue, rate, builder.add("jpegdec"), scale, convert, sink});
    } else {
        builder.link({tee, made, queue, rate, scale, convert, sink});
    }
    if (made != nullptr) {
        valve = retained(made);
    }
}

/// Links the camera to `tee`.
void addSourceBranch(Builder& builder, GstElement* source, const CameraMode& mode,
                     GstElement* tee) {
    if (mode.givesPictures()) {
        builder.link({source, builder.addFilter(mode.caps.get()), tee});
        return;
    }
    GstElement* decoder = builder.add("decodebin");
    builder.link({source, builder.addFilter(mode.caps.get()), decoder});
    GstElement* queue = addQueue(builder);
    builder.link({queue, tee});
    if (decoder != nullptr && queue != nullptr) {
        g_signal_connect(decoder, "pad-added", G_CALLBACK(onDecoded), queue);
    }
}

} // namespace

CapturePipeline::CapturePipeline(std::shared_ptr<Elements> elements)
    : elements_(std::move(elements)) {}

CapturePipeline::~CapturePipeline() {
    // Elements must not be freed while they run.
    if (!elements_->wasStarted) {
        elements_->end();
    } else if (!elements_->stopping &&
               !startDetachedThread([elements = elements_] { elements->end(); })) {
        elements_->end();
    }
}

std::shared_ptr<CapturePipeline> CapturePipeline::create(const Camera& camera,
                                                         const CameraMode& mode,
                                                         PipelineEvents events,
                                                         std::string& reason) {
    const auto shared = std::make_shared<const PipelineEvents>(std::move(events));
    auto elements = std::make_shared<Elements>();
    elements->events = shared;
    elements->pipeline.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    Builder builder(elements->pipeline.get());

    Source opened = sourceOf(camera);
    GstElement* source = builder.addMade(opened.element);
    elements->connection = std::move(opened.connection);
    GstElement* tee = builder.add("tee");
    const bool isJpeg = mode.kind == CameraMode::Kind::jpeg;
    addSourceBranch(builder, source, mode, tee);
    addStillBranch(builder, tee, isJpeg, shared, elements->stillValve);
    addPreviewBranch(builder, tee, isJpeg, shared, elements->previewValve);
    if (!builder.reason().empty()) {
        reason = builder.reason();
        elements->end();
        return nullptr;
    }

    elements->source = retained(source);
    // The camera's clock stops when the camera is disconnected.
    const GstPointer<GstClock> clock(gst_system_clock_obtain());
    gst_pipeline_use_clock(GST_PIPELINE(elements->pipeline.get()), clock.get());
    const GstPointer<GstPad> pad(gst_element_get_static_pad(tee, "sink"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, onPicture, keep(shared), forget);
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_EVENT_UPSTREAM, onUpstreamEvent, nullptr,
                      nullptr);
    const GstPointer<GstBus> bus(gst_element_get_bus(elements->pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), onMessage, keep(shared), forget);
    return std::shared_ptr<CapturePipeline>(new CapturePipeline(std::move(elements)));
}

bool CapturePipeline::start() {
    elements_->wasStarted = true;
    elements_->starting = true;
    if (!startDetachedThread([elements = elements_] { elements->start(); })) {
        elements_->starting = false;
        elements_->wasStarted = false;
    }
    return elements_->wasStarted;
}

bool CapturePipeline::stop(std::chrono::milliseconds timeout) {
    return runWithin(timeout, [elements = elements_] { elements->end(); });
}

bool CapturePipeline::hasEnded() const {
    return elements_->ended;
}

void CapturePipeline::wantStills(bool wanted) {
    if (elements_->stillValve) {
        g_object_set(elements_->stillValve.get(), "drop", wanted ? FALSE : TRUE, nullptr);
    }
}

void CapturePipeline::wantPreview(bool wanted) {
    g_object_set(elements_->previewValve.get(), "drop", wanted ? FALSE : TRUE, nullptr);
}

} // namespace vistrane
