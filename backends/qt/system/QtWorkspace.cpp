#include "backends/qt/system/QtWorkspace.h"

#include <utility>

#include "backends/posix/launch_program.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// An exit status of xdg-open.
constexpr int fileIsMissing = 2;

} // namespace

QtWorkspace::QtWorkspace(WhenFinished whenFinished, std::function<void(const std::string&)> log)
    : whenFinished_(std::move(whenFinished)), log_(std::move(log)) {}

bool QtWorkspace::openURL(const NSURL& url) {
    // Passes a path as bytes, which need not be valid text.
    const std::string address = url.isFileURL() ? url.path() : url.absoluteString();
    if (!url.isFileURL()) {
        // Failures to open an address are not reported, on purpose.
        launchProgram({"xdg-open", address}, [](int) {});
        return true;
    }
    const auto openWhole = [this, address](const std::optional<NSError>& error) {
        if (!error) {
            openFile(address);
        }
    };
    if (!whenFinished_ || !whenFinished_(address, openWhole)) {
        openFile(address);
    }
    return true;
}

void QtWorkspace::openFile(const std::string& path) const {
    launchProgram({"xdg-open", path}, [this, path](int status) {
        if (status == fileIsMissing) {
            log_("'" + shownText(path) + "' cannot be opened: it is not there.");
        } else if (status != 0) {
            log_("No program could be found that opens '" + shownText(path) +
                 "' (xdg-open: " + std::to_string(status) + ").");
        }
    });
}

} // namespace vistrane
