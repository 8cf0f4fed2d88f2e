#include "backends/pictures/PicturesAhead.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "backends/posix/threads.h"

namespace vistrane {

namespace {

using Paths = std::vector<std::string>;

} // namespace

struct PicturesAhead::Room::Picture {
    ImageUse use = ImageUse::View;
    /// What it uses, and at least that as long as it is counted.
    std::size_t bytes = 0;
    std::size_t reserved = 0;
    bool isExpected = true;
    bool isLoading = true;
    /// Null while it is loaded, and if that failed. A failure is not tried again.
    std::shared_ptr<const void> loaded;
    /// Whether it failed only for the memory of other pictures.
    bool isPostponed = false;
};

/// What the threads share. It lives as long as the last of them.
class PicturesAhead::State {
public:
    State(Load load, const Limits& limits) : load_(std::move(load)), limits_(limits) {}

    void expect(std::shared_ptr<const Paths> paths, std::size_t first, ImageUse use);
    /// `loadsMovies`: not only for views.
    void run(bool loadsMovies);
    void end();
    bool take(Room::Picture& picture, std::size_t bytes);
    void waitUntilIdle();
    std::size_t heldBytes() const;

private:
    using Picture = Room::Picture;
    struct Expectation {
        std::shared_ptr<const Paths> paths;
        std::size_t first = 0;
        /// By their indices in the list.
        std::map<std::size_t, std::shared_ptr<Picture>> pictures;
        /// The most memory that a picture has asked for.
        std::size_t largest = 0;

        bool has(const std::string& path) const {
            return std::any_of(pictures.begin(), pictures.end(),
                               [&](const auto& each) { return (*paths)[each.first] == path; });
        }
        std::size_t end(std::size_t most) const {
            return paths ? std::min(paths->size() - std::min(paths->size(), first), most) + first
                         : first;
        }
    };
    struct Task {
        std::shared_ptr<const Paths> paths;
        std::size_t index = 0;
        std::shared_ptr<Picture> picture;
    };
    struct Place {
        ImageUse use;
        std::size_t index;
    };

    Expectation& of(ImageUse use) { return expectations_[use == ImageUse::View ? 0 : 1]; }
    std::size_t most(ImageUse use) const {
        return use == ImageUse::View ? limits_.viewPictures : limits_.moviePictures;
    }
    std::optional<Place> next(bool withMovies = true);
    Task claim(const Place& place);
    std::shared_ptr<const void> load(const Task& task);
    void conclude(const Task& task, std::shared_ptr<const void>& loaded);

    const Load load_;
    const Limits limits_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable worked_;
    std::array<Expectation, 2> expectations_;
    std::size_t bytes_ = 0;
    std::size_t loading_ = 0;
    bool isEnding_ = false;
};

void PicturesAhead::State::expect(std::shared_ptr<const Paths> paths, std::size_t first,
                                  ImageUse use) {
    // Destroyed without the lock. The nodes are moved, so this allocates nothing.
    std::map<std::size_t, std::shared_ptr<Picture>> dropped;
    {
        const std::lock_guard lock(mutex_);
        Expectation& expectation = of(use);
        const std::size_t held = use == ImageUse::Movie && first > 0 ? first - 1 : first;
        const auto isHeld = [&](std::size_t index) {
            return paths && index >= held && index < paths->size() && index < first + most(use) &&
                   (paths == expectation.paths || (*paths)[index] == (*expectation.paths)[index]);
        };
        for (auto next = expectation.pictures.begin(); next != expectation.pictures.end();) {
            const auto each = next++;
            if (isHeld(each->first)) {
                continue;
            }
            Picture& picture = *each->second;
            picture.isExpected = false;
            bytes_ -= picture.isLoading ? 0 : picture.reserved;
            dropped.insert(expectation.pictures.extract(each));
        }
        expectation.largest = paths ? expectation.largest : 0;
        expectation.first = first;
        expectation.paths.swap(paths);
    }
    wake_.notify_all();
}

std::optional<PicturesAhead::State::Place> PicturesAhead::State::next(bool withMovies) {
    // What a view shows is wanted at a certain time.
    for (const ImageUse use : {ImageUse::View, ImageUse::Movie}) {
        Expectation& expectation = of(use);
        if ((use == ImageUse::Movie && !withMovies) ||
            (bytes_ > 0 && expectation.largest > limits_.memory - bytes_)) {
            continue;
        }
        // Both would share the picture, and each would count only what it wants of it.
        const Expectation& other = of(use == ImageUse::View ? ImageUse::Movie : ImageUse::View);
        const std::size_t end = expectation.end(most(use));
        for (std::size_t index = expectation.first; index < end; ++index) {
            if (!expectation.pictures.contains(index) && !other.has((*expectation.paths)[index])) {
                return Place{use, index};
            }
        }
    }
    return std::nullopt;
}

PicturesAhead::State::Task PicturesAhead::State::claim(const Place& place) {
    Expectation& expectation = of(place.use);
    auto picture = std::make_shared<Picture>();
    picture->use = place.use;
    expectation.pictures.emplace(place.index, picture);
    // It will probably need as much as others did.
    picture->reserved = expectation.largest > limits_.memory - bytes_ ? 0 : expectation.largest;
    bytes_ += picture->reserved;
    ++loading_;
    return {expectation.paths, place.index, std::move(picture)};
}

void PicturesAhead::State::run(bool loadsMovies) {
    std::unique_lock lock(mutex_);
    for (;;) {
        std::optional<Place> place;
        wake_.wait(lock, [&] { return isEnding_ || (place = next(loadsMovies)).has_value(); });
        if (isEnding_) {
            return;
        }
        Task task = claim(*place);
        lock.unlock();
        std::shared_ptr<const void> loaded = load(task);
        lock.lock();
        conclude(task, loaded);
        lock.unlock();
        // A picture that is not held is destroyed here, without the lock.
        loaded.reset();
        task = {};
        lock.lock();
        --loading_;
        wake_.notify_all(); // there may be room for another one now
        worked_.notify_all();
    }
}

std::shared_ptr<const void> PicturesAhead::State::load(const Task& task) {
    Room room(*this, *task.picture);
    try {
        return load_((*task.paths)[task.index], task.picture->use, room);
    } catch (const std::exception&) {
        // Out of memory. Whoever wants the picture loads it and reports what happens then.
        return nullptr;
    }
}

void PicturesAhead::State::conclude(const Task& task, std::shared_ptr<const void>& loaded) {
    Picture& picture = *task.picture;
    picture.isLoading = false;
    if (picture.isExpected && loaded) {
        picture.loaded = std::move(loaded);
    } else {
        picture.bytes = 0;
        if (picture.isExpected && picture.isPostponed) {
            of(picture.use).pictures.erase(task.index);
        }
    }
    bytes_ -= picture.reserved - picture.bytes;
    picture.reserved = picture.bytes;
}

bool PicturesAhead::State::take(Picture& picture, std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    if (!picture.isExpected) {
        return false;
    }
    Expectation& expectation = of(picture.use);
    if (bytes <= limits_.memory) {
        expectation.largest = std::max(expectation.largest, bytes);
    }
    if (bytes > picture.reserved) {
        const std::size_t others = bytes_ - picture.reserved;
        const bool fits = bytes <= limits_.memory - others;
        picture.isPostponed = !fits && others > 0;
        if (!fits) {
            return false;
        }
        bytes_ = others + bytes;
        picture.reserved = bytes;
    }
    picture.bytes = bytes;
    return true;
}

void PicturesAhead::State::end() {
    for (const ImageUse use : {ImageUse::View, ImageUse::Movie}) {
        expect(nullptr, 0, use);
    }
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
    wake_.notify_all();
}

void PicturesAhead::State::waitUntilIdle() {
    std::unique_lock lock(mutex_);
    worked_.wait(lock, [&] { return loading_ == 0 && !next(); });
}

std::size_t PicturesAhead::State::heldBytes() const {
    const std::lock_guard lock(mutex_);
    return bytes_;
}

bool PicturesAhead::Room::take(std::size_t bytes) {
    return state_.take(picture_, bytes);
}

PicturesAhead::PicturesAhead(Load load, const Limits& limits)
    : state_(std::make_shared<State>(std::move(load), limits)), threads_(limits.threads),
      movieThreads_(limits.movieThreads) {}

PicturesAhead::~PicturesAhead() {
    state_->end();
}

void PicturesAhead::expect(std::shared_ptr<const Paths> paths, std::size_t first, ImageUse use) {
    const bool isSome = paths && first < paths->size();
    state_->expect(std::move(paths), first, use);
    if (!isSome) {
        return;
    }
    std::call_once(started_, [this] {
        try {
            for (std::size_t i = 0; i < threads_; ++i) {
                startDetachedThread([state = state_, loadsMovies = i < movieThreads_] {
                    try {
                        state->run(loadsMovies);
                    } catch (const std::bad_alloc&) {
                        // This thread loads nothing any more.
                    }
                });
            }
        } catch (const std::bad_alloc&) {
            // Fewer threads, or none.
        }
    });
}

void PicturesAhead::waitUntilIdle() const {
    state_->waitUntilIdle();
}

std::size_t PicturesAhead::heldBytes() const {
    return state_->heldBytes();
}

std::size_t PicturesAhead::processors() {
    // The result is 0 if the system does not tell.
    return std::max(1U, std::thread::hardware_concurrency());
}

std::size_t PicturesAhead::otherProcessors() {
    return std::max<std::size_t>(2, processors()) - 1;
}

} // namespace vistrane
