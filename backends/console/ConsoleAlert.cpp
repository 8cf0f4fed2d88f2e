#include "backends/console/ConsoleAlert.h"

#include <optional>
#include <utility>

namespace vistrane {

ConsoleAlert::ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules)
    : rules_(std::move(rules)) {}

ConsoleAlert::ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules, const NSError& error)
    : rules_(std::move(rules)), messageText_(error.localizedDescription),
      informativeText_(error.domain + " error " + std::to_string(error.code)) {}

NSModalResponse ConsoleAlert::runModal() {
    std::string text = messageText_ + "\n" + informativeText_;
    text.erase(text.find_last_not_of('\n') + 1);
    rules_->show(text);

    std::optional<QtRunLoop::ModalScope> modal;
    if (rules_->loop.isMainThread()) {
        modal.emplace(rules_->loop);
    }
    return rules_->answer();
}

} // namespace vistrane
