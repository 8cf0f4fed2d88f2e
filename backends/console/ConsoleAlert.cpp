#include "backends/console/ConsoleAlert.h"

#include <optional>
#include <utility>

namespace vistrane {

namespace {

std::string withoutLineEnd(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

} // namespace

ConsoleAlert::ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules)
    : rules_(std::move(rules)) {}

ConsoleAlert::ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules, const NSError& error)
    : rules_(std::move(rules)), messageText_(error.localizedDescription),
      informativeText_(error.domain + " error " + std::to_string(error.code)), buttons_{"OK"} {}

NSModalResponse ConsoleAlert::runModal() {
    if (buttons_.empty()) {
        buttons_.push_back("OK");
    }
    if (rules_->show) {
        rules_->show(withoutLineEnd(messageText_ + "\n" + informativeText_));
    }
    std::optional<ConsoleRunLoop::ModalScope> modal;
    if (isOnMainThread()) {
        modal.emplace(rules_->loop);
    }
    return answer();
}

NSModalResponse ConsoleAlert::answer() const {
    return rules_->answer ? rules_->answer(*this) : NSAlertFirstButtonReturn;
}

} // namespace vistrane
