#pragma once

#include <string>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// What a front end is told of beyond the results that the program itself gets: the reasons and
/// outcomes that the kits keep to themselves. Any method may be called from any thread; each
/// returns soon and throws nothing. The observer outlives every media object.
class MediaObserver {
public:
    /// A file was asked for as a picture and is none, or, with an empty path, a picture in memory
    /// could not be decoded or encoded. Called before the null result is returned, on the thread
    /// that asked.
    virtual void imageCouldNotBeRead(const std::string& path, const NSError& reason) {
        (void)path, (void)reason;
    }

    /// `NSData::writeToFile` begins to write, has written every byte, or has failed (also before
    /// it began).
    virtual void fileIsBeingWritten(const std::string& path) { (void)path; }
    virtual void fileWasWritten(const std::string& path) { (void)path; }
    virtual void fileCouldNotBeWritten(const std::string& path, const NSError& reason) {
        (void)path, (void)reason;
    }

    /// An append was taken or refused, on the thread that appends, before it returns.
    virtual void pictureWasAppended() {}
    virtual void pictureWasRefused(const NSError& reason) { (void)reason; }

    /// A movie was asked to finish: it lies whole under its name, or nothing does.
    virtual void movieIsWhole(const std::string& path) { (void)path; }
    virtual void movieFailed(const std::string& path, const NSError& reason) {
        (void)path, (void)reason;
    }

    /// The camera in use stopped giving pictures, or gives them again. `message` is one line.
    virtual void cameraChanged(const std::string& message) { (void)message; }

protected:
    MediaObserver() = default;
    ~MediaObserver() = default;
};

} // namespace vistrane
