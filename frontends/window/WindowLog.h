#pragma once

#include <string>

#include "backends/posix/BackgroundWriter.h"

namespace vistrane {

/// The program's messages on its standard error output. Any thread. Writing holds
/// nobody up; what comes while a reader leaves a megabyte unread is lost.
class WindowLog {
public:
    /// `descriptor` stays the caller's. One for the process, for all its life.
    explicit WindowLog(int descriptor);

    /// The message as it is, and a line end.
    void write(const std::string& message);

    /// Waits a moment for what was written, for a process that is about to end.
    void flush();

    /// Says why and ends the process with status 1.
    [[noreturn]] void fail(const std::string& message);

    /// From now on Qt's messages go into this log. One that ends the process, which Qt would do
    /// with a core dump, ends it with status 1.
    void takeMessagesOfQt();
    /// What ends the process from now on is no longer the fault of a missing display.
    void windowCanBeOpened();

private:
    BackgroundWriter writer_;
};

} // namespace vistrane
