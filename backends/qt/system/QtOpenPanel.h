#pragma once

#include <memory>
#include <optional>
#include <string>

#include "backends/qt/system/QtAlert.h"
#include "platform/appkit/NSOpenPanel.h"

namespace vistrane {

/// A panel for one folder or file. Suspends timers while it is open. For a folder it is the
/// desktop's own dialog where the portal has one, otherwise Qt's, which can create folders, also by
/// typing the name of a new one, but not rename, move or delete anything.
///
/// In Qt's dialog, names that are not valid UTF-8 cannot be shown and are not offered.
class QtOpenPanel final : public NSOpenPanel {
public:
    explicit QtOpenPanel(std::shared_ptr<const QtDialogRules> rules) : rules_(std::move(rules)) {}

    void setTitle(const std::string& title) override { title_ = title; }
    void setCanChooseDirectories(bool allowed) override { canChooseDirectories_ = allowed; }
    void setCanCreateDirectories(bool allowed) override { canCreateDirectories_ = allowed; }
    void setAllowsMultipleSelection(bool) override {}
    void setCanChooseFiles(bool allowed) override { canChooseFiles_ = allowed; }
    void setPrompt(const std::string& prompt) override { prompt_ = prompt; }

    NSModalResponse runModal() override;
    std::optional<NSURL> URL() const override { return url_; }

private:
    NSModalResponse askQt();

    const std::shared_ptr<const QtDialogRules> rules_;
    std::string title_;
    std::string prompt_;
    bool canChooseDirectories_ = false;
    bool canCreateDirectories_ = true;
    bool canChooseFiles_ = true;
    std::optional<NSURL> url_;
};

} // namespace vistrane
