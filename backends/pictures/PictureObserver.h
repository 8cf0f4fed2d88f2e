#pragma once

#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// Receives outcomes and reasons that the kits do not report to the program, for a front end to
/// show. Called on any thread; must return quickly and not throw. Outlives every picture object.
class PictureObserver {
public:
    /// The picture file at `path` could not be read. With an empty path: a picture in memory could
    /// not be decoded or encoded. Called on the calling thread, before the null result is returned.
    virtual void imageCouldNotBeRead(const std::string& path, const NSError& reason) {
        (void)path, (void)reason;
    }

    /// `NSData::writeToFile` begins. One of the next two calls follows.
    virtual void fileIsBeingWritten(const std::string& path) { (void)path; }
    /// All bytes were written.
    virtual void fileWasWritten(const std::string& path) { (void)path; }
    virtual void fileCouldNotBeWritten(const std::string& path, const NSError& reason) {
        (void)path, (void)reason;
    }

protected:
    PictureObserver() = default;
    ~PictureObserver() = default;
};

} // namespace vistrane
