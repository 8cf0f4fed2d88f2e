#include "backends/movies/encoder_module.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/movies/movie_errors.h"

namespace vistrane {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string refusalOf(const std::string& path) {
    const EncoderModuleResult result = loadEncoderModule(path);
    EXPECT_EQ(result.module, nullptr);
    if (!result.error) {
        return {};
    }
    EXPECT_EQ(result.error->code, AVErrorEncoderNotFound);
    EXPECT_THAT(result.error->localizedDescription, HasSubstr("Install libavcodec with libx264"));
    return result.error->localizedDescription;
}

TEST(EncoderModule, IsLoadedOnceAndStays) {
    const EncoderModuleResult first = encoderModule();
    ASSERT_FALSE(first.error) << first.error->localizedDescription;
    ASSERT_NE(first.module, nullptr);
    EXPECT_EQ(first.module->availability(), std::nullopt);
    EXPECT_EQ(encoderModule().module, first.module);
}

TEST(EncoderModule, ThatIsMissingIsNamedInTheError) {
    EXPECT_THAT(refusalOf("/missing/module.so"), HasSubstr("/missing/module.so"));
}

TEST(EncoderModule, ThatIsNoLibraryIsNamedInTheError) {
    const std::string path = testing::TempDir() + "broken-module.so";
    std::ofstream(path) << "not a library";
    EXPECT_THAT(refusalOf(path), HasSubstr(path));
    std::filesystem::remove(path);
}

TEST(EncoderModule, WithoutItsEntryIsNamedInTheError) {
    EXPECT_THAT(refusalOf("libm.so.6"),
                AllOf(HasSubstr("libm.so.6"), HasSubstr("undefined symbol")));
}

} // namespace
} // namespace vistrane
