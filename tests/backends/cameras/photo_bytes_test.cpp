#include "backends/cameras/PhotoBytes.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vistrane {
namespace {

class PhotoBytesFile : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "photo.XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    static std::string contents(const std::string& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::filesystem::path folder_;
    PhotoBytes bytes_{{'a', 'b', 'c'}};
};

TEST_F(PhotoBytesFile, WritingReplacesWhatTheFileHeld) {
    for (const bool atomically : {false, true}) {
        std::ofstream(path("p.ppm")) << "something longer";
        EXPECT_TRUE(bytes_.writeToFile(path("p.ppm"), atomically));
        EXPECT_EQ(contents(path("p.ppm")), "abc");
    }
}

TEST_F(PhotoBytesFile, APipeWithoutAReaderIsRefusedAtOnce) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(bytes_.writeToFile(path("pipe"), false));
}

TEST_F(PhotoBytesFile, AMissingFolderFails) {
    EXPECT_FALSE(bytes_.writeToFile(path("none/p.ppm"), false));
    EXPECT_FALSE(bytes_.writeToFile(path("none/p.ppm"), true));
}

} // namespace
} // namespace vistrane
