#pragma once

#include "platform/appkit/NSOpenPanel.h"

namespace vistrane {

/// A panel that is always cancelled, because there is no user.
class ConsoleOpenPanel final : public NSOpenPanel {
public:
    void setTitle(const std::string&) override {}
    void setCanChooseDirectories(bool) override {}
    void setCanCreateDirectories(bool) override {}
    void setAllowsMultipleSelection(bool) override {}
    void setCanChooseFiles(bool) override {}
    void setPrompt(const std::string&) override {}
    NSModalResponse runModal() override { return NSModalResponseCancel; }
    std::optional<NSURL> URL() const override { return std::nullopt; }
};

} // namespace vistrane
