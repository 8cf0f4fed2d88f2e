#pragma once

#include <chrono>
#include <cstddef>

namespace vistrane {

/// Listing or opening a camera needs up to 30 descriptors at once, and PipeWire, libcamera and GLib
/// end the process when there are none left. So neither is tried with fewer than these.
inline constexpr std::size_t safeDescriptors = 64;

inline constexpr char demoCameraName[] = "Demo Camera";

/// Settings of `Cameras`. Tests set shorter times. Timeouts that wait for a picture are at least
/// three periods of a slow camera.
struct CameraOptions {
    /// Whether to list the machine's cameras. If false, no provider is queried.
    bool findsCameras = true;

    /// Whether to list `demoCameraName`, which shows a day in a minute, after the real cameras.
    bool demoCamera = false;
    /// Whether it shows moving colour bars instead, for tests of colours.
    bool demoBars = false;

    /// How long the first listing waits for the media framework and its plugins. The first start
    /// after an installation looks at every plugin, which takes seconds.
    std::chrono::milliseconds loading{20000};
    /// How long a listing waits for the slowest provider.
    std::chrono::milliseconds listing{1500};
    /// How long an input waits for its camera's first picture.
    std::chrono::milliseconds opening{3000};
    /// For how long an input repeats an attempt that fails, or that does not find the camera. Some
    /// virtual cameras restart when their last reader disconnects.
    std::chrono::milliseconds reappear{1000};
    /// How long a call on the main thread waits for the camera's driver.
    std::chrono::milliseconds driverTimeout{3000};
    /// How long a started camera may take for its first picture.
    std::chrono::milliseconds firstPicture{8000};
    /// After this time without a first picture, the start is repeated once. Less than
    /// `firstPicture` and `opening`.
    std::chrono::milliseconds secondTry{2000};
    /// After this time without a picture, check in a new listing whether the camera is still there.
    std::chrono::milliseconds doubt{700};
    /// After this time without a picture, the camera counts as disconnected, even if it is still
    /// listed.
    std::chrono::milliseconds silence{3000};
    /// How long a request waits for its picture.
    std::chrono::milliseconds still{4000};
    /// The interval between attempts to reopen a lost camera.
    std::chrono::milliseconds retry{1000};
};

} // namespace vistrane
