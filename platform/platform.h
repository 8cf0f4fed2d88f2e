#pragma once

namespace vistrane {

class AppKit;
class AVFoundation;
class CoreGraphics;
class CoreVideo;
class Dispatch;
class Foundation;

/// Everything that the program needs from the system: one interface for each kit. A front end
/// creates the kits; they outlive every object that uses this struct. Each kit says which threads
/// may use it.
struct Platform {
    Foundation& foundation;
    AppKit& appKit;
    AVFoundation& avFoundation;
    CoreVideo& coreVideo;
    CoreGraphics& coreGraphics;
    Dispatch& dispatch;
};

} // namespace vistrane
