#pragma once

#include <string>

#include "backends/posix/BackgroundWriter.h"

namespace vistrane {

/// Writes the program's messages to standard error. Any thread. Writing does not block: while more
/// than a megabyte is unread, the oldest messages are discarded, and one line says how many.
class WindowLog {
public:
    /// The caller keeps `descriptor` open. One for the process; it is never destroyed.
    explicit WindowLog(int descriptor);

    /// Writes the message unchanged, then a newline.
    void write(const std::string& message);

    /// Waits up to 200 ms for pending messages. For a process that is about to end.
    void flush();

    /// Writes the message, then ends the process with status 1.
    [[noreturn]] void fail(const std::string& message);

    /// From now on Qt's messages go to this log. After a fatal message the process ends with status
    /// 1, instead of Qt's core dump.
    void takeMessagesOfQt();
    /// From now on, a fatal message is not caused by a missing display.
    void windowCanBeOpened();

private:
    BackgroundWriter writer_;
};

} // namespace vistrane
