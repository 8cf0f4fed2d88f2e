#include "backends/pictures/graphics_state.h"

#include <utility>
#include <vector>

namespace vistrane {

namespace {

struct GraphicsState {
    std::shared_ptr<NSGraphicsContext> current;
    std::vector<std::shared_ptr<NSGraphicsContext>> saved;
};

/// Per thread, because drawing calls do not name their target.
GraphicsState& stateOfThisThread() {
    thread_local GraphicsState state;
    return state;
}

} // namespace

std::shared_ptr<NSGraphicsContext> currentGraphicsContext() {
    return stateOfThisThread().current;
}

void setCurrentGraphicsContext(std::shared_ptr<NSGraphicsContext> context) {
    stateOfThisThread().current = std::move(context);
}

void pushGraphicsContext() {
    GraphicsState& state = stateOfThisThread();
    state.saved.push_back(state.current);
}

void popGraphicsContext() {
    GraphicsState& state = stateOfThisThread();
    if (!state.saved.empty()) {
        state.current = std::move(state.saved.back());
        state.saved.pop_back();
    }
}

} // namespace vistrane
