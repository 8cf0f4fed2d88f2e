#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "backends/pictures/MediaImage.h"
#include "backends/pictures/PicturesAhead.h"
#include "backends/pictures/SharedPicture.h"
#include "backends/pictures/file_bytes.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class ExpectedFiles : public PicturesTest {
protected:
    static constexpr std::uint32_t width = 24;
    static constexpr std::uint32_t height = 16;
    static constexpr std::size_t pixels = 3 * std::size_t{width} * height;

    static PngSample sample(unsigned seed) {
        return randomPng({2, 8, false, false}, width, height, seed);
    }

    static FileState stateOf(const std::string& path) {
        auto file = OpenFile::at(path, 1 << 20);
        return std::get<OpenFile>(file).state();
    }
    /// Waits until what is read of the file may be held.
    static void settle(const std::string& path) {
        while (!stateOf(path).isSettled()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }

    /// Gives the hint, and waits until it is worked off.
    void expect(const std::vector<std::string>& paths, ImageUse use) {
        pictures_.expectImages(std::make_shared<const std::vector<std::string>>(paths), 0, use);
        pictures_.ahead().waitUntilIdle();
    }
    std::shared_ptr<NSImage> load(const std::string& path) {
        return pictures_.imageWithContentsOfFile(path);
    }
    static const PictureSource& sourceOf(const std::shared_ptr<NSImage>& image) {
        return *dynamic_cast<const MediaImage&>(*image).source();
    }
    static bool isInMemory(const std::shared_ptr<NSImage>& image) {
        const auto* const shared = dynamic_cast<const SharedPicture*>(&sourceOf(image));
        return shared != nullptr && const_cast<SharedDecoding&>(shared->decoding())
                                            .picture()
                                            ->pixelsInMemory(PixelForm::RGB) != nullptr;
    }
    static std::vector<std::uint32_t> smaller(const std::shared_ptr<NSImage>& image) {
        std::vector<std::uint32_t> small(std::size_t{7} * 5);
        EXPECT_FALSE(sourceOf(image).readSmaller(7, 5, small.data(), 28));
        return small;
    }
    /// The same from a picture of its own.
    std::vector<std::uint32_t> smaller(const PngSample& picture) {
        return smaller(PicturesTest::load(picture.file));
    }
};

TEST_F(ExpectedFiles, AFrameOfAMovieIsTakenFromMemory) {
    const std::string path = folder_ / "a.png";
    const PngSample first = sample(1);
    put(path, first.file);
    settle(path);
    expect({path}, ImageUse::Movie);
    EXPECT_EQ(pictures_.ahead().heldBytes(), pixels);
    const auto image = load(path);
    EXPECT_TRUE(isInMemory(image));
    EXPECT_EQ(draw(image, width, height).rgb, overBlack(first.rgba));
    EXPECT_EQ(smaller(image), smaller(first));
    pictures_.expectImages(nullptr, 0, ImageUse::Movie);
    EXPECT_EQ(pictures_.ahead().heldBytes(), 0U);
    EXPECT_EQ(draw(image, width, height).rgb, overBlack(first.rgba));
}

TEST_F(ExpectedFiles, AViewsPictureIsMadeInTheSizeThatTheLastOneHad) {
    const std::vector<std::string> paths = {folder_ / "a.png", folder_ / "b.png",
                                            folder_ / "other.png"};
    put(paths[0], sample(1).file);
    put(paths[1], sample(2).file);
    put(paths[2], randomPng({2, 8, false, false}, 30, 10).file);
    settle(paths[2]);
    // Without a size the files are read only.
    expect({paths[1]}, ImageUse::View);
    EXPECT_EQ(pictures_.ahead().heldBytes(), stateOf(paths[1]).length);
    pictures_.expectImages(nullptr, 0, ImageUse::View);
    EXPECT_EQ(smaller(load(paths[0])), smaller(sample(1)));
    expect({paths[1], paths[2]}, ImageUse::View);
    // A picture of another shape will have another size.
    EXPECT_EQ(pictures_.ahead().heldBytes(),
              stateOf(paths[1]).length + 4 * 7 * 5 + stateOf(paths[2]).length);
    EXPECT_EQ(smaller(load(paths[1])), smaller(sample(2)));
    EXPECT_EQ(draw(load(paths[1]), width, height).rgb, overBlack(sample(2).rgba));
}

TEST_F(ExpectedFiles, AFileThatWasChangedAMomentAgoIsNotHeld) {
    const std::string path = folder_ / "a.png";
    for (const ImageUse use : {ImageUse::Movie, ImageUse::View}) {
        std::size_t held = 0;
        do {
            pictures_.expectImages(nullptr, 0, use);
            put(path, sample(1).file);
            expect({path}, use);
            held = pictures_.ahead().heldBytes();
        } while (stateOf(path).isSettled()); // only if the machine is very slow
        EXPECT_EQ(held, 0U);
    }
    // Nor is one that is dated in the future.
    const struct timespec later[2] = {{4'000'000'000, 0}, {4'000'000'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), later, 0), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    expect({path}, ImageUse::Movie);
    EXPECT_EQ(pictures_.ahead().heldBytes(), 0U);
    EXPECT_EQ(draw(load(path), width, height).rgb, overBlack(sample(1).rgba));
}

/// A clock that counts in steps may give two changes the same time.
TEST_F(ExpectedFiles, ASecondChangeAtTheSameTimeIsNoticed) {
    const std::string path = folder_ / "a.png";
    const PngSample first = sample(1);
    PngSample second = sample(2);
    for (unsigned seed = 3; second.file.size() != first.file.size() && seed < 10000; ++seed) {
        second = sample(seed);
    }
    ASSERT_EQ(second.file.size(), first.file.size());
    bool isSameState = false;
    for (int attempt = 0; attempt < 300 && !isSameState; ++attempt) {
        pictures_.expectImages(nullptr, 0, ImageUse::Movie);
        put(path, first.file);
        const FileState before = stateOf(path);
        expect({path}, ImageUse::Movie);
        put(path, second.file);
        isSameState = stateOf(path) == before;
    }
    if (!isSameState) {
        GTEST_SKIP() << "here every change has a time of its own";
    }
    settle(path);
    EXPECT_EQ(draw(load(path), width, height).rgb, overBlack(second.rgba));
}

TEST_F(ExpectedFiles, AFileIsWhatItIsWhenItIsLoaded) {
    std::vector<std::string> paths;
    for (const char* name : {"same", "rewritten", "swapped", "truncated", "backdated", "gone"}) {
        paths.push_back(folder_ / name);
        put(paths.back(), sample(1).file);
    }
    settle(paths.back());
    for (const ImageUse use : {ImageUse::View, ImageUse::Movie}) {
        expect(paths, use);
    }
    EXPECT_GT(pictures_.ahead().heldBytes(), 0U);
    put(paths[1], sample(2).file);
    put(folder_ / "other", sample(3).file);
    ASSERT_EQ(::rename((folder_ / "other").c_str(), paths[2].c_str()), 0);
    ASSERT_EQ(::truncate(paths[3].c_str(), 100), 0);
    struct stat before {};
    ASSERT_EQ(::stat(paths[4].c_str(), &before), 0);
    put(paths[4], sample(4).file);
    const struct timespec times[2] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, paths[4].c_str(), times, 0), 0);
    ASSERT_EQ(::unlink(paths[5].c_str()), 0);
    const auto drawn = [&](std::size_t index) {
        return draw(load(paths[index]), width, height).rgb;
    };
    EXPECT_EQ(drawn(0), overBlack(sample(1).rgba));
    EXPECT_EQ(drawn(1), overBlack(sample(2).rgba));
    EXPECT_EQ(drawn(2), overBlack(sample(3).rgba));
    EXPECT_EQ(drawn(4), overBlack(sample(4).rgba));
    EXPECT_THAT(observer_.unread, IsEmpty());
    EXPECT_FALSE(load(paths[3]));
    EXPECT_FALSE(load(paths[5]));
    EXPECT_THAT(observer_.unread, SizeIs(2));
}

TEST_F(ExpectedFiles, WhatIsWrongIsReportedWhenThePictureIsLoadedAndNotBefore) {
    const std::string fifo = folder_ / "fifo.png";
    const std::string damaged = folder_ / "damaged.png";
    const std::string flawed = folder_ / "flawed.png";
    const std::string other = folder_ / "other.png";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    Bytes bytes = sample(1).file;
    put(flawed, Bytes(bytes.begin(), bytes.end() - 12)); // without its end
    // The compressed pixels are damaged, which is found out when they are decoded.
    const std::string mark = "IDAT";
    const auto data = std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end());
    std::fill(data + 4, data + 24, std::uint8_t{0xFF});
    put(damaged, bytes);
    put(other, {'o', 't', 'h', 'e', 'r'});
    settle(other);
    for (const ImageUse use : {ImageUse::Movie, ImageUse::View}) {
        expect({fifo, folder_.path(), folder_ / "none", damaged}, use);
        expect({flawed, other, std::string("a\0b", 3), ""}, use);
        EXPECT_EQ(pictures_.ahead().heldBytes(), 0U);
    }
    EXPECT_THAT(observer_.unread, IsEmpty());
    EXPECT_THAT(observer_.flaws, IsEmpty());
    EXPECT_FALSE(load(fifo));
    EXPECT_FALSE(load(folder_.path()));
    EXPECT_FALSE(load(other));
    EXPECT_THAT(observer_.unread, SizeIs(3));
    EXPECT_EQ(draw(load(flawed), width, height).rgb, overBlack(sample(1).rgba));
    EXPECT_THAT(observer_.flaws, SizeIs(1));
}

/// As a compile and a playback side by side, over a folder in which frames come and go.
TEST_F(ExpectedFiles, TheListMayChangeAtEveryTick) {
    constexpr std::size_t count = 8;
    std::vector<std::string> paths;
    std::vector<Bytes> contents;
    for (unsigned number = 0; number < count; ++number) {
        paths.push_back(folder_ / (std::to_string(number) + ".png"));
        put(paths.back(), sample(number + 1).file);
        contents.push_back(overBlack(sample(number + 1).rgba));
    }
    settle(paths.back());
    load(paths[0]);
    const auto use = [&](ImageUse as, bool changes) {
        std::vector<std::size_t> order(count);
        for (std::size_t at = 0; at < count; ++at) {
            order[at] = at;
        }
        for (std::size_t tick = 0; tick < 300; ++tick) {
            std::rotate(order.begin(), order.begin() + 1 + static_cast<std::ptrdiff_t>(tick % 3),
                        order.end());
            auto listed = std::make_shared<std::vector<std::string>>();
            for (const std::size_t number : order) {
                listed->push_back(paths[number]);
            }
            pictures_.expectImages(listed, tick % count, as);
            const auto image = load((*listed)[tick % count]);
            if (as == ImageUse::View) {
                sourceOf(image).expectSmaller(7, 5);
                smaller(image);
            }
            EXPECT_EQ(draw(image, width, height).rgb, contents[order[tick % count]]);
            if (changes && tick % 20 == 0) {
                // The same picture in a file of its own.
                const std::string copy = folder_ / "copy";
                put(copy, sample(1).file);
                EXPECT_EQ(::rename(copy.c_str(), paths[0].c_str()), 0);
            }
        }
        pictures_.expectImages(nullptr, 0, as);
    };
    auto compile = std::async(std::launch::async, [&] { use(ImageUse::Movie, false); });
    use(ImageUse::View, true);
    compile.get();
    pictures_.ahead().waitUntilIdle();
    EXPECT_EQ(pictures_.ahead().heldBytes(), 0U);
    EXPECT_THAT(observer_.unread, IsEmpty());
}

} // namespace
} // namespace vistrane::testing
