#include "backends/qt/system/QtWorkspace.h"

#include <utility>

#include "backends/posix/launch_program.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// An exit status of xdg-open.
constexpr int fileIsMissing = 2;

} // namespace

QtWorkspace::QtWorkspace(WhenFinished whenFinished, Failed failed)
    : whenFinished_(std::move(whenFinished)), failed_(std::move(failed)) {}

bool QtWorkspace::openURL(const NSURL& url) {
    // Passes a path as bytes, which need not be valid text.
    const std::string address = url.isFileURL() ? url.path() : url.absoluteString();
    if (!url.isFileURL()) {
        open(address);
        return true;
    }
    const auto openWhole = [this, address](const std::optional<NSError>& error) {
        if (!error) {
            open(address);
        }
    };
    if (!whenFinished_ || !whenFinished_(address, openWhole)) {
        open(address);
    }
    return true;
}

void QtWorkspace::open(const std::string& address) const {
    launchProgram({"xdg-open", address}, [this, address](int status) {
        const std::string shown = "'" + shownText(address) + "'";
        if (status == fileIsMissing) {
            failed_(shown + " cannot be opened: it is not there.", address);
        } else if (status != 0) {
            failed_("No program could be found that opens " + shown +
                        " (xdg-open: " + std::to_string(status) + ").",
                    address);
        }
    });
}

} // namespace vistrane
