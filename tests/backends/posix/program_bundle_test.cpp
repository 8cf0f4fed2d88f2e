#include "backends/posix/ProgramBundle.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

std::optional<std::string> shortVersion(const std::string& version) {
    return ProgramBundle(version).objectForInfoDictionaryKey("CFBundleShortVersionString");
}

std::optional<std::string> bundleVersion(const std::string& version) {
    return ProgramBundle(version).objectForInfoDictionaryKey("CFBundleVersion");
}

TEST(ProgramBundle, SplitsAVersionAtItsLastPoint) {
    EXPECT_EQ(shortVersion("2.1.5"), "2.1");
    EXPECT_EQ(bundleVersion("2.1.5"), "5");
    EXPECT_EQ(shortVersion("10.20"), "10");
    EXPECT_EQ(bundleVersion("10.20"), "20");
    EXPECT_EQ(shortVersion("7"), "7");
    EXPECT_EQ(bundleVersion("7"), std::nullopt);
    EXPECT_EQ(shortVersion("1.2."), "1.2");
    EXPECT_EQ(bundleVersion("1.2."), "");
}

TEST(ProgramBundle, HasNothingElse) {
    const ProgramBundle bundle("2.1.5");
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleName"), std::nullopt);
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(""), std::nullopt);
}

} // namespace
} // namespace vistrane
