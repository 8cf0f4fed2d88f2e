#pragma once

#include <chrono>

namespace vistrane {

inline constexpr char demoCameraName[] = "Demo Camera";

/// What `Cameras` can be told. The times are those of a patient front end; tests take shorter ones.
/// For a camera that says that it is slow, those that wait for a picture are at least three of its
/// periods.
struct CameraOptions {
    /// Looks for the machine's own cameras; without it nothing is asked and nothing waited for.
    bool findsCameras = true;

    /// Offers a moving test picture under the name `demoCameraName` after the real ones.
    bool demoCamera = false;

    /// How long one listing waits for the slowest provider.
    std::chrono::milliseconds listing{1500};
    /// How long an input waits for a camera that is not listed: some virtual cameras restart when
    /// their last reader leaves.
    std::chrono::milliseconds reappear{1000};
    /// How long `startRunning` and `stopRunning` hold up the main thread at most.
    std::chrono::milliseconds patience{3000};
    /// How long a started camera may take for its first picture.
    std::chrono::milliseconds firstPicture{8000};
    /// A start without a picture for so long is begun anew once; less than `firstPicture`.
    std::chrono::milliseconds secondTry{3000};
    /// A camera without a picture for so long is looked for in a fresh list.
    std::chrono::milliseconds doubt{700};
    /// A camera without a picture for so long is gone, even if it is still listed.
    std::chrono::milliseconds silence{3000};
    /// How long a request waits for its picture.
    std::chrono::milliseconds still{4000};
    /// The pause between two attempts to get a lost camera back.
    std::chrono::milliseconds retry{1000};
};

} // namespace vistrane
