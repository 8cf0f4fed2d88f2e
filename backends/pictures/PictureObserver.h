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

    /// A picture file was read although a part that the pixels do not need is damaged. Called once
    /// for each path.
    virtual void imageHasFlaw(const NSError& flaw) { (void)flaw; }

    /// `NSData::writeToFile` begins. One of the two calls below follows.
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
