#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vistrane {

inline constexpr char pipeWireProvider[] = "pipewiredeviceprovider";
inline constexpr char libcameraProvider[] = "libcameraprovider";
inline constexpr char v4l2Provider[] = "v4l2deviceprovider";

/// What one provider reports about one camera. Unknown texts are empty.
struct CameraFacts {
    /// The provider's factory name.
    std::string provider;
    /// The display name, one line of valid UTF-8 (see `shownText`).
    std::string name;
    /// Stays the same when the camera is unplugged and plugged into the same port again.
    std::string identity;
    /// Unique among the listed cameras; changes when a camera returns.
    std::string instance;
    /// The kernel's device file, such as "/dev/video0".
    std::string devicePath;
    /// libcamera's name of the camera.
    std::string libcameraId;
    /// Vendor and product of a USB camera, "046d:0825".
    std::string usbId;

    bool operator==(const CameraFacts&) const = default;
};

/// The indices of the cameras to offer, sorted by provider (PipeWire, libcamera, v4l2, others),
/// otherwise in the given order. A camera that several providers offer is kept once, from the first
/// of these providers. Cameras that are not known to be the same are all kept, even if their names
/// are equal.
std::vector<std::size_t> offeredOnce(const std::vector<CameraFacts>& cameras);

/// The instances of the cameras that only their instance distinguishes from that one. Other
/// cameras' instances do not count: a number that one gave back may become that of another.
std::vector<std::string> twinsOf(std::size_t index, const std::vector<CameraFacts>& cameras);

/// The index of the camera that was `lost`, or `npos`. `others` are its twins that were listed
/// together with it, so none of them is the lost one. If two candidates cannot be distinguished,
/// neither is taken.
std::size_t findAgain(const CameraFacts& lost, const std::vector<std::string>& others,
                      const std::vector<CameraFacts>& cameras);

inline constexpr std::size_t npos = static_cast<std::size_t>(-1);

/// The vendor and product at the end of a USB camera's libcamera name; empty for other cameras.
std::string usbIdOfLibcamera(const std::string& libcameraId);

} // namespace vistrane
