#pragma once

#include <chrono>
#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

inline constexpr char tooFewDescriptors[] = "too many files are open";

/// Messages for a listing without cameras.
std::string cannotListCameras();
std::string mediaFrameworkHangs(std::chrono::milliseconds waited);

NSError noSuchDevice();
NSError deviceNotConnected(const std::string& camera);
NSError deviceCannotBeOpened(const std::string& camera, const std::string& reason);
NSError noFirstPicture(const std::string& camera, std::chrono::milliseconds waited);
NSError sessionNotRunning();
NSError sessionWasStopped();
NSError noPictureInTime(const std::string& camera, std::chrono::milliseconds waited);
NSError pictureNotReadable(const std::string& camera);
/// `reason` may be empty.
NSError cameraGivesNoPictures(const std::string& camera, const std::string& reason);

} // namespace vistrane
