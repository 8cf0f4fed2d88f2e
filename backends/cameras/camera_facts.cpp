#include "backends/cameras/camera_facts.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <numeric>
#include <set>
#include <string_view>

namespace vistrane {

namespace {

int rankOf(const CameraFacts& camera) {
    const std::string_view provider = camera.provider;
    return provider == pipeWireProvider    ? 0
           : provider == libcameraProvider ? 1
           : provider == v4l2Provider      ? 2
                                           : 3;
}

/// PipeWire reports only the device file that it reads. v4l2 reports the USB model behind that
/// file.
std::map<std::string, std::string> usbIdsByPath(const std::vector<CameraFacts>& cameras) {
    std::map<std::string, std::string> ids;
    for (const CameraFacts& camera : cameras) {
        if (!camera.devicePath.empty() && !camera.usbId.empty()) {
            ids[camera.devicePath] = camera.usbId;
        }
    }
    return ids;
}

std::vector<std::size_t> inOrderOfProviders(const std::vector<CameraFacts>& cameras) {
    std::vector<std::size_t> order(cameras.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return rankOf(cameras[a]) < rankOf(cameras[b]);
    });
    return order;
}

std::vector<std::size_t> withoutKnownDoubles(const std::vector<CameraFacts>& cameras) {
    std::set<std::string> paths;
    std::set<std::string> ids;
    std::vector<std::size_t> kept;
    for (const std::size_t index : inOrderOfProviders(cameras)) {
        const CameraFacts& camera = cameras[index];
        const bool newPath = camera.devicePath.empty() || paths.insert(camera.devicePath).second;
        const bool newId = camera.libcameraId.empty() || ids.insert(camera.libcameraId).second;
        if (newPath && newId) {
            kept.push_back(index);
        }
    }
    return kept;
}

/// The cameras of one USB model.
struct UsbOffers {
    std::vector<std::size_t> byPath;
    std::vector<std::size_t> byLibcamera;
};

std::map<std::string, UsbOffers> usbOffers(const std::vector<CameraFacts>& cameras,
                                           const std::vector<std::size_t>& kept) {
    const auto idsByPath = usbIdsByPath(cameras);
    std::map<std::string, UsbOffers> offers;
    for (const std::size_t index : kept) {
        const CameraFacts& camera = cameras[index];
        const auto known = idsByPath.find(camera.devicePath);
        if (!camera.libcameraId.empty()) {
            offers[usbIdOfLibcamera(camera.libcameraId)].byLibcamera.push_back(index);
        } else if (known != idsByPath.end()) {
            offers[known->second].byPath.push_back(index);
        }
    }
    offers.erase("");
    return offers;
}

} // namespace

std::string usbIdOfLibcamera(const std::string& libcameraId) {
    constexpr std::size_t length = 9;
    if (libcameraId.size() <= length || libcameraId[libcameraId.size() - length - 1] != '-') {
        return {};
    }
    std::string id = libcameraId.substr(libcameraId.size() - length);
    for (std::size_t i = 0; i < length; ++i) {
        if (i == 4 ? id[i] != ':' : std::isxdigit(static_cast<unsigned char>(id[i])) == 0) {
            return {};
        }
    }
    return id;
}

std::vector<std::size_t> offeredOnce(const std::vector<CameraFacts>& cameras) {
    std::vector<std::size_t> kept = withoutKnownDoubles(cameras);
    for (const auto& [id, offers] : usbOffers(cameras, kept)) {
        // libcamera and the kernel share no identifier. If both list the same number of cameras of
        // a model, they are the same cameras; otherwise they cannot be matched.
        if (offers.byPath.size() != offers.byLibcamera.size()) {
            continue;
        }
        const bool pathIsBetter =
            rankOf(cameras[offers.byPath.front()]) <= rankOf(cameras[offers.byLibcamera.front()]);
        for (const std::size_t index : pathIsBetter ? offers.byLibcamera : offers.byPath) {
            std::erase(kept, index);
        }
    }
    return kept;
}

std::vector<std::string> twinsOf(std::size_t index, const std::vector<CameraFacts>& cameras) {
    const CameraFacts& camera = cameras[index];
    std::vector<std::string> instances;
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        if (i != index && cameras[i].provider == camera.provider &&
            cameras[i].identity == camera.identity) {
            instances.push_back(cameras[i].instance);
        }
    }
    return instances;
}

std::size_t findAgain(const CameraFacts& lost, const std::vector<std::string>& others,
                      const std::vector<CameraFacts>& cameras) {
    std::vector<std::size_t> candidates;
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        const CameraFacts& camera = cameras[i];
        if (camera.provider != lost.provider || camera.identity != lost.identity) {
            continue;
        }
        if (camera.instance == lost.instance) {
            return i;
        }
        if (std::find(others.begin(), others.end(), camera.instance) == others.end()) {
            candidates.push_back(i);
        }
    }
    return candidates.size() == 1 ? candidates.front() : npos;
}

} // namespace vistrane
