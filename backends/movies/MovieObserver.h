#pragma once

#include <cstddef>
#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// A complete movie.
struct FinishedMovie {
    std::string path;
    /// In pixels, as shown.
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t frames = 0;
    /// In seconds.
    double duration = 0.0;
};

/// Receives outcomes and reasons that the kit does not report to the program, for a front end to
/// show. Called on any thread; must return quickly and not throw. Outlives every movie object.
class MovieObserver {
public:
    /// An append was accepted or refused. Called on the appending thread, before the append
    /// returns.
    virtual void pictureWasAppended() {}
    virtual void pictureWasRefused(const std::string& moviePath, const NSError& reason) {
        (void)moviePath, (void)reason;
    }

    /// The outcome of a movie after `finishWriting...`: the complete file is at its path, or not.
    /// The reason says where a complete movie was kept that could not get its name.
    virtual void movieIsWhole(const FinishedMovie& movie) { (void)movie; }
    virtual void movieFailed(const std::string& path, const NSError& reason) {
        (void)path, (void)reason;
    }

protected:
    MovieObserver() = default;
    ~MovieObserver() = default;
};

} // namespace vistrane
