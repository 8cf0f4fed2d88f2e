#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vistrane {

inline constexpr char pipeWireProvider[] = "pipewiredeviceprovider";
inline constexpr char libcameraProvider[] = "libcameraprovider";
inline constexpr char v4l2Provider[] = "v4l2deviceprovider";

/// What one provider tells about one camera. Texts it does not tell are empty.
struct CameraFacts {
    /// The provider's factory name.
    std::string provider;
    /// For people, one line of valid UTF-8: as `shownText` gives it.
    std::string name;
    /// The same again after the camera was unplugged and plugged in at the same place.
    std::string identity;
    /// Differs from that of every other camera listed, and of this camera after it came back.
    std::string instance;
    /// The kernel's file, such as "/dev/video0".
    std::string devicePath;
    /// libcamera's own name of the camera.
    std::string libcameraId;
    /// Vendor and product of a USB camera, "046d:0825".
    std::string usbId;

    bool operator==(const CameraFacts&) const = default;
};

/// The indices of the cameras to offer, those of the better provider first (PipeWire, libcamera,
/// v4l2, others), else in the given order. A camera that several providers offer is kept once, from
/// the best one. Cameras that cannot be told to be the same are all kept, whatever their names.
std::vector<std::size_t> offeredOnce(const std::vector<CameraFacts>& cameras);

/// The index of the camera that `lost` is now, or `npos`. `others` are the instances that were
/// listed beside it: they never count, and neither do two candidates that cannot be told apart.
std::size_t findAgain(const CameraFacts& lost, const std::vector<std::string>& others,
                      const std::vector<CameraFacts>& cameras);

inline constexpr std::size_t npos = static_cast<std::size_t>(-1);

/// Vendor and product from the end of a libcamera name, if it is that of a USB camera.
std::string usbIdOfLibcamera(const std::string& libcameraId);

} // namespace vistrane
