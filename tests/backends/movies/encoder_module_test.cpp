#include "backends/movies/encoder_module.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/movies/movie_errors.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

using testing::AllOf;
using testing::HasSubstr;

TEST(EncoderModule, IsLoadedOnceAndStays) {
    const EncoderModuleResult first = encoderModule();
    ASSERT_FALSE(first.error) << first.error->localizedDescription;
    ASSERT_NE(first.module, nullptr);
    EXPECT_EQ(first.module->availability(), std::nullopt);
    EXPECT_EQ(encoderModule().module, first.module);
}

TEST(EncoderModule, ThatCannotBeLoadedIsNamedInTheErrorWithTheReason) {
    const WorkFolder folder;
    const std::string broken = folder / "broken-module.so";
    std::ofstream(broken) << "not a library";
    const std::pair<std::string, const char*> cases[] = {
        {"/missing/module.so", ""}, {broken, ""}, {"libm.so.6", "undefined symbol"}};
    for (const auto& [path, reason] : cases) {
        const EncoderModuleResult result = loadEncoderModule(path);
        EXPECT_EQ(result.module, nullptr);
        ASSERT_TRUE(result.error);
        EXPECT_EQ(result.error->code, AVErrorEncoderNotFound);
        EXPECT_THAT(result.error->localizedDescription,
                    AllOf(HasSubstr("Install libavcodec with libx264"), HasSubstr(path),
                          HasSubstr(reason)));
    }
}

} // namespace
} // namespace vistrane
