#pragma once

namespace vistrane {

enum AVMediaType { AVMediaTypeVideo, AVMediaTypeMuxed, AVMediaTypeAudio };

enum AVFileType { AVFileTypeQuickTimeMovie };

// Keys and values of a movie track's output settings.
inline constexpr char AVVideoCodecKey[] = "AVVideoCodecKey";
inline constexpr char AVVideoCodecTypeH264[] = "avc1";
inline constexpr char AVVideoScalingModeKey[] = "AVVideoScalingModeKey";
inline constexpr char AVVideoScalingModeResizeAspect[] = "AVVideoScalingModeResizeAspect";
inline constexpr char AVVideoWidthKey[] = "AVVideoWidthKey";
inline constexpr char AVVideoHeightKey[] = "AVVideoHeightKey";

} // namespace vistrane
