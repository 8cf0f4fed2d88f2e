#include "backends/movies/Libav.h"

#include <gtest/gtest.h>

namespace vistrane {
namespace {

TEST(Libav, IsLoadedOnceAndStays) {
    const Libav* const functions = libav();
    ASSERT_NE(functions, nullptr);
    EXPECT_EQ(libav(), functions);
    EXPECT_NE(functions->avcodec_find_encoder_by_name("libx264"), nullptr);
}

TEST(Libav, IsNotThereWithoutOneOfItsLibraries) {
    Libav functions{};
    EXPECT_TRUE(loadLibav(libavcodecName, libavutilName, functions));
    EXPECT_FALSE(loadLibav("libavcodec.so.0", libavutilName, functions));
    EXPECT_FALSE(loadLibav(libavcodecName, "libavutil.so.0", functions));
}

TEST(Libav, IsNotThereWithoutOneOfItsFunctions) {
    Libav functions{};
    EXPECT_FALSE(loadLibav(libavutilName, libavutilName, functions));
}

} // namespace
} // namespace vistrane
