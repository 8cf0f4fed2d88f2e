#include <chrono>
#include <thread>

#include "backends/pictures/MediaImage.h"
#include "backends/pictures/SharedPicture.h"
#include "backends/pictures/file_bytes.h"
#include "backends/pictures/png_header.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PictureFiles = PicturesTest;
using ::testing::AllOf;
using ::testing::HasSubstr;

const SharedDecoding& sharedOf(const std::shared_ptr<NSImage>& image) {
    const auto source = dynamic_cast<const MediaImage&>(*image).source();
    return dynamic_cast<const SharedPicture&>(*source).decoding();
}

Bytes someFile() {
    return randomPng({2, 8, false, false}, 6, 4).file;
}

TEST_F(PictureFiles, NeitherTheNameNorALinkMatters) {
    for (const char* name : {"a.png", "a.jpg", "noname", "ein Bild ä.png", "\xFF\xFE.png"}) {
        put(folder_ / name, someFile());
        EXPECT_TRUE(pictures_.imageWithContentsOfFile(folder_ / name)) << name;
    }
    ASSERT_EQ(::symlink("a.png", (folder_ / "link").c_str()), 0);
    EXPECT_TRUE(pictures_.imageWithContentsOfFile(folder_ / "link"));
    EXPECT_TRUE(observer_.unread.empty());
}

TEST_F(PictureFiles, AnotherContentIsRefusedWithPathAndReason) {
    put(folder_ / "jpeg.png", {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 1});
    put(folder_ / "empty.png", {});
    put(folder_ / "large.png", someFile());
    // No disk space is taken by what was never written.
    ASSERT_EQ(::truncate((folder_ / "large.png").c_str(), off_t{1} << 40), 0);
    for (const auto& [name, reason] : {std::pair{"jpeg.png", "not a PNG file"},
                                       {"empty.png", "empty"},
                                       {"large.png", "too large"}}) {
        EXPECT_FALSE(pictures_.imageWithContentsOfFile(folder_ / name));
        const auto& [path, error] = observer_.unread.back();
        EXPECT_EQ(path, folder_ / name);
        EXPECT_THAT(error.localizedDescription, AllOf(HasSubstr(path), HasSubstr(reason)));
    }
    EXPECT_EQ(observer_.unread.size(), 3U);
}

TEST_F(PictureFiles, AnotherContentIsNotReadWhole) {
    constexpr std::uint64_t large = 1 << 28;
    const auto lengthOf = [&](const Bytes& start) {
        put(folder_ / "a.png", start);
        EXPECT_EQ(::truncate((folder_ / "a.png").c_str(), large), 0);
        auto file = OpenFile::at(folder_ / "a.png", large);
        return std::get<OpenFile>(file).read(pngSignature).bytes.length();
    };
    EXPECT_LT(lengthOf({0xFF, 0xD8, 0xFF, 0xE0}), large / 10);
    EXPECT_EQ(lengthOf(someFile()), large);
}

TEST_F(PictureFiles, WhatIsNoRegularFileIsRefusedWithoutWaiting) {
    const std::string fifo = folder_ / "fifo.png";
    const std::string directory = folder_ / "folder.png";
    const std::string dangling = folder_ / "dangling.png";
    const std::string loop = folder_ / "loop.png";
    const std::string zero = folder_ / "zero.png";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(::mkdir(directory.c_str(), 0700), 0);
    ASSERT_EQ(::symlink("nothing", dangling.c_str()), 0);
    ASSERT_EQ(::symlink("loop.png", loop.c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", zero.c_str()), 0);
    const std::vector<std::string> paths = {fifo,
                                            directory,
                                            dangling,
                                            loop,
                                            zero,
                                            "/dev/null",
                                            "/dev/zero",
                                            folder_ / "none",
                                            "",
                                            "/",
                                            std::string("a\0b", 3)};
    for (const std::string& path : paths) {
        EXPECT_FALSE(pictures_.imageWithContentsOfFile(path)) << path;
    }
    ASSERT_EQ(observer_.unread.size(), paths.size());
    for (const auto& [path, reason] : observer_.unread) {
        EXPECT_FALSE(reason.localizedDescription.empty());
        EXPECT_EQ(reason.localizedDescription.find('\0'), std::string::npos);
    }
    EXPECT_EQ(observer_.unread[2].second.domain, "NSPOSIXErrorDomain");
    EXPECT_EQ(observer_.unread[2].second.code, ENOENT);
    EXPECT_EQ(observer_.unread[3].second.code, ELOOP);
}

TEST_F(PictureFiles, AFileThatMayNotBeReadIsReported) {
    put(folder_ / "a.png", someFile());
    ::chmod((folder_ / "a.png").c_str(), 0);
    if (::access((folder_ / "a.png").c_str(), R_OK) == 0) {
        GTEST_SKIP() << "this user may read everything";
    }
    EXPECT_FALSE(pictures_.imageWithContentsOfFile(folder_ / "a.png"));
    EXPECT_EQ(observer_.unread.at(0).second.code, EACCES);
}

TEST_F(PictureFiles, ALoadedPictureDoesNotNeedItsFileAnyMore) {
    const PngSample sample = randomPng({2, 8, false, false}, 6, 4);
    put(folder_ / "a.png", sample.file);
    const auto image = pictures_.imageWithContentsOfFile(folder_ / "a.png");
    ASSERT_EQ(::truncate((folder_ / "a.png").c_str(), 10), 0);
    EXPECT_EQ(draw(image, 6, 4).rgb, overBlack(sample.rgba));
}

TEST_F(PictureFiles, AFileThatWasRewrittenAMomentAgoIsReadAnew) {
    const std::string path = folder_ / "a.png";
    std::vector<std::shared_ptr<NSImage>> images;
    for (unsigned seed = 1; seed < 20; ++seed) {
        // No row's length changes, and often neither do the file's nor its time.
        const PngSample sample = randomPng({2, 8, false, false}, 6, 4, seed);
        put(path, sample.file);
        images.push_back(pictures_.imageWithContentsOfFile(path));
        EXPECT_EQ(draw(images.back(), 6, 4).rgb, overBlack(sample.rgba));
    }
}

TEST_F(PictureFiles, WhatWasReadOfAFileThatStaysIsShared) {
    const std::string path = folder_ / "a.png";
    const PngSample sample = randomPng({2, 8, false, false}, 6, 4);
    put(path, sample.file);
    while (!std::get<OpenFile>(OpenFile::at(path, 1000)).state().isSettled()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    const auto first = pictures_.imageWithContentsOfFile(path);
    const auto second = pictures_.imageWithContentsOfFile(path);
    EXPECT_EQ(&sharedOf(first), &sharedOf(second));
    EXPECT_EQ(draw(first, 6, 4).rgb, overBlack(sample.rgba));
    EXPECT_EQ(draw(second, 6, 4).rgb, overBlack(sample.rgba));
    const PngSample other = randomPng({2, 8, false, false}, 6, 4, 2);
    put(path, other.file);
    EXPECT_EQ(draw(pictures_.imageWithContentsOfFile(path), 6, 4).rgb, overBlack(other.rgba));
    EXPECT_EQ(draw(first, 6, 4).rgb, overBlack(sample.rgba));
}

TEST_F(PictureFiles, AReasonIsOneLineWhateverThePath) {
    EXPECT_FALSE(pictures_.imageWithContentsOfFile("/a\nb\tc"));
    EXPECT_THAT(observer_.unread.at(0).second.localizedDescription, HasSubstr("/a\xEF\xBF\xBD"
                                                                              "b\xEF\xBF\xBD"
                                                                              "c"));
    EXPECT_EQ(observer_.unread[0].first, "/a\nb\tc");
}

} // namespace
} // namespace vistrane::testing
