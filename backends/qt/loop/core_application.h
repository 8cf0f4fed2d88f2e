#pragma once

namespace vistrane {

/// Creates the application object that Qt's event loop needs, for a program without a window.
///
/// It is a QCoreApplication, which needs no display. It gets no arguments, because Qt would remove
/// its own options from them. It installs no signal handler, keeps the C locale and writes no
/// message, whatever the environment says. Call once, on the main thread, while no other thread
/// uses the locale. The object is never destroyed.
void makeCoreApplication();

} // namespace vistrane
