#include "backends/pictures/BitmapContext.h"

namespace vistrane {

BitmapContext::BitmapContext(const Surface& surface, PixelBuffer* target)
    : surface_(surface), target_(target) {
    if (target_ != nullptr) {
        target_->retain();
    }
}

BitmapContext::~BitmapContext() {
    if (target_ != nullptr) {
        target_->release();
    }
}

void BitmapContext::markDamaged(const NSError& reason) {
    if (target_ != nullptr) {
        target_->markDamaged(reason);
    }
}

Surface MediaGraphicsContext::surface() const {
    Surface result = context_->surface();
    if (flipped_) {
        result.rows += static_cast<std::ptrdiff_t>(result.height - 1) * result.stride;
        result.stride = -result.stride;
    }
    return result;
}

} // namespace vistrane
