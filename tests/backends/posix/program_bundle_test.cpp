#include "backends/posix/ProgramBundle.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(ProgramBundle, SplitsAVersionAtItsLastPoint) {
    const struct {
        const char* version;
        const char* shortVersion;
        std::optional<std::string> bundleVersion;
    } cases[] = {{"2.1.5", "2.1", "5"},
                 {"10.20", "10", "20"},
                 {"7", "7", std::nullopt},
                 {"1.2.", "1.2", ""}};
    for (const auto& each : cases) {
        const ProgramBundle bundle(each.version);
        EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleShortVersionString"),
                  each.shortVersion);
        EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleVersion"), each.bundleVersion);
    }
}

TEST(ProgramBundle, HasNothingElse) {
    const ProgramBundle bundle("2.1.5");
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleName"), std::nullopt);
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(""), std::nullopt);
}

} // namespace
} // namespace vistrane
