#include <gtest/gtest.h>

#include "backends/icu/IcuLocale.h"
#include "core/folder/SortedFrames.h"
#include "tests/support/RandomListing.h"

namespace vistrane {
namespace {

TEST(FrameListing, AnyListingsInAnyLocaleGiveWhatSortingAnewGives) {
    for (const char* name :
         {"en_US", "en_US_POSIX", "de@collation=phonebook", "fr_CA", "ja_JP", "th_TH", "tr_TR"}) {
        const auto locale = std::make_shared<const IcuLocale>(name);
        RandomListing list(7);
        SortedFrames frames;
        for (int step = 0; step < 500; ++step) {
            list.change();
            const auto names = std::make_shared<FileNames>();
            for (const std::string& each : list.names()) {
                names->append(each);
            }
            const auto paths = frames.update("/f\xff/\u0301", names, locale);
            ASSERT_EQ(*paths, sortedFrames("/f\xff/\u0301", list.names(), *locale))
                << name << ", step " << step;
        }
    }
}

} // namespace
} // namespace vistrane
