#pragma once

namespace vistrane {

/// Creates the application object that Qt's event loop needs, for a program without a window.
///
/// It is a QCoreApplication: it needs no display. It gets no arguments, because Qt would take its
/// own options out of them, and installs no signal handler. The C locale stays as it was and no
/// message is written, whatever the environment says. Call it once, on the main thread, while no
/// other thread uses the locale; the object is never destroyed.
void makeCoreApplication();

} // namespace vistrane
