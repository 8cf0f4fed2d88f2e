#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/appkit/ImageUse.h"

namespace vistrane {

/// Loads the pictures that will probably be wanted next, on threads of its own, and holds them as
/// long as they are expected. Any thread.
///
/// Its threads start with the first hint. They do not keep the process alive, and nothing waits for
/// them: the destructor returns while they finish their last pictures. If the system refuses memory
/// or threads, pictures are not loaded ahead.
class PicturesAhead {
    class State;

public:
    /// The memory of one picture. For its `Load` only.
    class Room {
    public:
        /// Says how much memory the picture uses from now on, in bytes. False if there is not
        /// enough, or if the picture is not expected any more. What was taken last counts as long
        /// as the picture is held.
        bool take(std::size_t bytes);

    private:
        friend class State;
        struct Picture;
        Room(State& state, Picture& picture) : state_(state), picture_(picture) {}

        State& state_;
        Picture& picture_;
    };

    /// Returns what holds the loaded picture. Null if it cannot be loaded, must not be held, or got
    /// no memory. It may throw. Called on several threads, also after the destructor, so it must
    /// own everything that it uses.
    using Load = std::function<std::shared_ptr<const void>(const std::string& path, ImageUse use,
                                                           Room& room)>;

    struct Limits {
        /// A view's thread waits meanwhile, so each processor has one. With two processors, frames
        /// of 3840 x 2160 came after 29 ms; with one thread after 49 ms, as without any.
        std::size_t threads = processors();
        /// How many of them also load for movies. One processor is busy with the frame in use. With
        /// two processors, a second thread saved no time and took memory.
        std::size_t movieThreads = otherProcessors();
        /// How many pictures for a view.
        std::size_t viewPictures = processors() + 2;
        /// For a movie, whose pictures are large.
        std::size_t moviePictures = otherProcessors();
        /// Of all pictures together, in bytes.
        std::size_t memory = std::size_t{256} << 20;
    };

    explicit PicturesAhead(Load load) : PicturesAhead(std::move(load), Limits()) {}
    PicturesAhead(Load load, const Limits& limits);
    ~PicturesAhead();
    PicturesAhead(const PicturesAhead&) = delete;
    PicturesAhead& operator=(const PicturesAhead&) = delete;

    /// As `AppKit::expectImages`. Pictures that the new hint does not contain are let go of at
    /// once, except that for a movie the one before `first` is held too: the window may be about to
    /// load the frame that the compile thread has just loaded.
    void expect(std::shared_ptr<const std::vector<std::string>> paths, std::size_t first,
                ImageUse use);

    /// For tests: waits until the hints are worked off.
    void waitUntilIdle() const;
    /// The memory of the pictures that are held or being loaded, in bytes.
    std::size_t heldBytes() const;

private:
    static std::size_t processors();
    static std::size_t otherProcessors();

    std::shared_ptr<State> state_;
    std::size_t threads_;
    std::size_t movieThreads_;
    std::once_flag started_;
};

} // namespace vistrane
