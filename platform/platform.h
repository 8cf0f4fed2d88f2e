#pragma once

namespace vistrane {

class AppKit;
class AVFoundation;
class CoreGraphics;
class CoreVideo;
class Dispatch;
class Foundation;

/// All that the program asks of the system it runs on: one interface for each kit. A front end
/// builds the kits; they outlive every object that was given this struct. Each kit says which
/// threads may use it.
struct Platform {
    Foundation& foundation;
    AppKit& appKit;
    AVFoundation& avFoundation;
    CoreVideo& coreVideo;
    CoreGraphics& coreGraphics;
    Dispatch& dispatch;
};

} // namespace vistrane
