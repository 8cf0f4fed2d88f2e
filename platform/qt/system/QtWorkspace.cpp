#include "platform/qt/system/QtWorkspace.h"

#include <utility>

#include "platform/posix/launch_program.h"

namespace vistrane {

QtWorkspace::QtWorkspace(WhenFinished whenFinished, std::function<void(const std::string&)> log)
    : whenFinished_(std::move(whenFinished)), log_(std::move(log)) {}

bool QtWorkspace::openURL(const NSURL& url) {
    // A path is handed over as it is: its bytes need not be text.
    const std::string address = url.isFileURL() ? url.path() : url.absoluteString();
    const auto openWhole = [this, address](const std::optional<NSError>& error) {
        if (!error) {
            open(address);
        }
    };
    if (!url.isFileURL() || !whenFinished_ || !whenFinished_(address, openWhole)) {
        open(address);
    }
    return true;
}

void QtWorkspace::open(const std::string& address) const {
    launchProgram({"xdg-open", address}, [this, address](int status) {
        if (status != 0) {
            log_("No program could be found that opens '" + address +
                 "' (xdg-open: " + std::to_string(status) + ").");
        }
    });
}

} // namespace vistrane
