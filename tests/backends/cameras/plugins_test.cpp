#include <cstdlib>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(Plugins, AreThoseOfTheListedPackagesOnly) {
    const char* const folder = std::getenv("GST_PLUGIN_SYSTEM_PATH_1_0");
    if (folder == nullptr) {
        GTEST_SKIP() << "ctest sets the plugins of the tests.";
    }
    gst_init(nullptr, nullptr);
    const std::unique_ptr<GList, decltype(&gst_plugin_list_free)> plugins(
        gst_registry_get_plugin_list(gst_registry_get()), gst_plugin_list_free);
    int files = 0;
    for (const GList* each = plugins.get(); each != nullptr; each = each->next) {
        const char* const file = gst_plugin_get_filename(GST_PLUGIN(each->data));
        if (file != nullptr) { // others are part of the library
            EXPECT_THAT(std::string(file), testing::StartsWith(folder));
            ++files;
        }
    }
    EXPECT_GT(files, 0);
}

} // namespace
} // namespace vistrane
