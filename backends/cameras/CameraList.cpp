#include "backends/cameras/CameraList.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "backends/cameras/CameraOptions.h"
#include "backends/cameras/PipeWireDevices.h"
#include "backends/posix/Descriptor.h"
#include "backends/posix/threads.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr char videoSource[] = "Video/Source";
constexpr char demoProvider[] = "demo";

std::string text(gchar* owned) {
    const GstPointer<gchar> held(owned);
    return held ? shownText(held.get()) : std::string();
}

std::string property(const GstStructure* properties, const char* name) {
    const gchar* value =
        properties != nullptr ? gst_structure_get_string(properties, name) : nullptr;
    return value != nullptr ? value : "";
}

std::string firstOf(std::initializer_list<std::string> texts) {
    for (const std::string& candidate : texts) {
        if (!candidate.empty()) {
            return candidate;
        }
    }
    return {};
}

/// Joins the two numbers to "046d:0825". udev and GStreamer print them with or without "0x".
std::string usbId(std::string vendor, std::string product) {
    for (std::string* number : {&vendor, &product}) {
        if (number->starts_with("0x")) {
            number->erase(0, 2);
        }
    }
    return vendor.size() == 4 && product.size() == 4 ? vendor + ":" + product : "";
}

CameraFacts factsOf(GstDevice* device, const std::string& provider) {
    const GstPointer<GstStructure> properties(gst_device_get_properties(device));
    const auto get = [&](const char* name) { return property(properties.get(), name); };
    CameraFacts facts;
    facts.provider = provider;
    facts.name = text(gst_device_get_display_name(device));
    if (provider == pipeWireProvider) {
        // The node's name is derived from the camera's port; the node's number is never reused.
        facts.identity = get("node.name") + " " + facts.name;
        facts.instance = firstOf({get("object.serial"), get("object.id")});
        facts.devicePath = get("api.v4l2.path");
        facts.libcameraId = get("api.libcamera.path");
    } else if (provider == v4l2Provider) {
        // The kernel may assign another device number after a replug; the bus path stays the same.
        facts.devicePath = get("device.path");
        facts.identity =
            firstOf({get("device.bus_path"), get("v4l2.device.bus_info"), facts.devicePath}) + " " +
            facts.name;
        facts.instance = facts.devicePath;
        facts.usbId = usbId(get("device.vendor.id"), get("device.product.id"));
    } else if (provider == libcameraProvider) {
        facts.libcameraId = facts.name;
        facts.identity = facts.instance = facts.name;
    } else {
        facts.identity = facts.instance = facts.name;
    }
    if (facts.name.empty()) {
        facts.name = "Camera";
    }
    return facts;
}

Camera cameraOf(GstDevice* device, const std::string& provider) {
    Camera camera;
    camera.facts = factsOf(device, provider);
    camera.device = std::shared_ptr<GstDevice>(retained(device));
    const GstPointer<GstCaps> caps(gst_device_get_caps(device));
    camera.modes = std::make_shared<const std::vector<CameraMode>>(modesOf(caps.get()));
    return camera;
}

/// Without this, each listing prints libcamera's version. The first call is on the main thread, the
/// only one that reads the environment.
void quietLibcamera() {
    static const bool isQuiet = setenv("LIBCAMERA_LOG_LEVELS", "*:ERROR", 0) == 0;
    static_cast<void>(isQuiet);
}

} // namespace

struct CameraList::Provider {
    std::string name;
    GstPointer<GstDeviceProvider> provider;
    std::mutex mutex;
    std::condition_variable freed;
    bool busy = false;

    /// Queries the provider, one thread at a time. Empty if it is still busy at `deadline`.
    std::vector<Camera> queryBefore(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock(mutex);
        if (!freed.wait_until(lock, deadline, [this] { return !busy; })) {
            return {};
        }
        busy = true;
        lock.unlock();
        std::vector<Camera> cameras = query();
        lock.lock();
        busy = false;
        freed.notify_one();
        return cameras;
    }

    std::vector<Camera> query() const {
        std::vector<Camera> cameras;
        if (!hasFreeDescriptors(safeDescriptors)) {
            return cameras;
        }
        GList* devices = name == pipeWireProvider ? PipeWireDevices::shared().list(provider.get())
                                                  : gst_device_provider_get_devices(provider.get());
        for (GList* item = devices; item != nullptr; item = item->next) {
            GstDevice* device = GST_DEVICE(item->data);
            if (gst_device_has_classes(device, videoSource)) {
                cameras.push_back(cameraOf(device, name));
            }
        }
        g_list_free_full(devices, gst_object_unref);
        return cameras;
    }
};

namespace {

/// The answers to one listing. Shared, because late answers outlive the listing.
struct Answers {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::vector<Camera>> byProvider;
    std::size_t missing = 0;
};

} // namespace

CameraList::CameraList() = default;

CameraList::~CameraList() = default;

void CameraList::prepare() {
    quietLibcamera();
    quietLibcamera();
    startDetachedThread([self = shared_from_this()] { self->awaitProviders(); });
}

bool CameraList::load(std::chrono::milliseconds timeout) {
    quietLibcamera();
    return runWithin(timeout, [self = shared_from_this()] { self->awaitProviders(); });
}

void CameraList::awaitProviders() {
    std::call_once(providersFound_, [this] { findProviders(); });
}

void CameraList::findProviders() {
    if (!startGStreamer()) {
        return;
    }
    GList* factories = gst_device_provider_factory_list_get_device_providers(GST_RANK_MARGINAL);
    for (GList* item = factories; item != nullptr; item = item->next) {
        auto* factory = GST_DEVICE_PROVIDER_FACTORY(item->data);
        if (!gst_device_provider_factory_has_classes(factory, videoSource)) {
            continue;
        }
        auto provider = std::make_shared<Provider>();
        provider->name = gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(factory));
        provider->provider.reset(gst_device_provider_factory_get(factory));
        if (provider->provider) {
            providers_.push_back(std::move(provider));
        }
    }
    gst_plugin_feature_list_free(factories);
}

std::vector<Camera> CameraList::list(std::chrono::milliseconds timeout) {
    const std::vector<Camera> all = listOf("", timeout);
    std::vector<CameraFacts> facts;
    for (const Camera& camera : all) {
        facts.push_back(camera.facts);
    }
    std::vector<Camera> offered;
    for (const std::size_t index : offeredOnce(facts)) {
        offered.push_back(all[index]);
    }
    return offered;
}

std::vector<Camera> CameraList::listOf(const std::string& name, std::chrono::milliseconds timeout) {
    awaitProviders();
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    auto answers = std::make_shared<Answers>();
    answers->byProvider.resize(providers_.size());
    std::unique_lock lock(answers->mutex);
    for (std::size_t i = 0; i < providers_.size(); ++i) {
        if (!name.empty() && providers_[i]->name != name) {
            continue;
        }
        ++answers->missing;
        const bool asked = startDetachedThread([answers, deadline, i, provider = providers_[i]] {
            std::vector<Camera> cameras = provider->queryBefore(deadline);
            std::lock_guard answersLock(answers->mutex);
            answers->byProvider[i] = std::move(cameras);
            --answers->missing;
            answers->changed.notify_all();
        });
        if (!asked) {
            --answers->missing; // without a thread there is no answer
        }
    }
    answers->changed.wait_until(lock, deadline, [&] { return answers->missing == 0; });

    std::vector<Camera> cameras;
    for (const auto& answer : answers->byProvider) {
        cameras.insert(cameras.end(), answer.begin(), answer.end());
    }
    return cameras;
}

Camera demoCamera(bool showsBars) {
    Camera camera;
    camera.showsBars = showsBars;
    camera.facts.provider = demoProvider;
    camera.facts.name = demoCameraName;
    camera.facts.identity = camera.facts.instance = camera.facts.name;
    const GstPointer<GstCaps> caps(
        startGStreamer() ? gst_caps_from_string("video/x-raw,format=I420,width=1280,height=720,"
                                                "framerate=30/1,colorimetry=bt709")
                         : nullptr);
    camera.modes = std::make_shared<const std::vector<CameraMode>>(
        caps ? modesOf(caps.get()) : std::vector<CameraMode>());
    return camera;
}

bool startGStreamerWithin(std::chrono::milliseconds timeout) {
    quietLibcamera();
    return runWithin(timeout, [] { startGStreamer(); });
}

bool startGStreamer() {
    quietLibcamera();
    static const bool works = gst_init_check(nullptr, nullptr, nullptr) != FALSE;
    return works;
}

} // namespace vistrane
