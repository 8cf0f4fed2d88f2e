#include "frontends/window/LeftOutFrames.h"

#include <algorithm>

#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr std::size_t mostNames = 5;

thread_local std::string loadedFrame;

} // namespace

void LeftOutFrames::frameIsLoaded(
    const std::string& path) { // NOLINT(readability-convert-member-functions-to-static)
    loadedFrame = path;
}

void LeftOutFrames::frameWasRefused(const std::string& moviePath) {
    const std::lock_guard lock(mutex_);
    names_[moviePath].push_back(shownText(loadedFrame.substr(loadedFrame.rfind('/') + 1)));
}

std::optional<std::string> LeftOutFrames::takeSentence(const std::string& moviePath) {
    const std::lock_guard lock(mutex_);
    const auto node = names_.extract(moviePath);
    if (node.empty()) {
        return std::nullopt;
    }
    const std::vector<std::string>& names = node.mapped();
    const std::size_t named = std::min(names.size(), mostNames);
    std::string text = names.size() == 1 ? "A frame could not be added to the movie: "
                                         : std::to_string(names.size()) +
                                               " frames could not be added to the movie: ";
    for (std::size_t i = 0; i < named; ++i) {
        text += (i > 0 ? ", " : "") + names[i];
    }
    if (names.size() > named) {
        text += " and " + std::to_string(names.size() - named) + " more";
    }
    return text + ".";
}

} // namespace vistrane
