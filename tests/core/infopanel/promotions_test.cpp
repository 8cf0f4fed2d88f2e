#include "core/infopanel/promotions.h"

#include <filesystem>
#include <set>

#include <gmock/gmock.h>

namespace vistrane {
namespace {

TEST(Promotions, TheMenusTitlesAreThoseThatAClickIsLookedUpIn) {
    std::vector<std::string> titles;
    for (const Promotion& promotion : promotions()) {
        titles.push_back(promotion.title);
    }
    EXPECT_EQ(titles, promotionTitles());
}

TEST(Promotions, ThereAreElevenWithATitleAndAnAddressOfTheirOwn) {
    EXPECT_EQ(promotions().size(), 11U);
    std::set<std::string> titles;
    std::set<std::string> addresses;
    for (const Promotion& promotion : promotions()) {
        titles.insert(promotion.title);
        addresses.insert(promotion.storeAddress);
    }
    EXPECT_EQ(titles.size(), 11U);
    EXPECT_EQ(addresses.size(), 11U);
    EXPECT_EQ(titles.count("") + addresses.count(""), 0U);
}

TEST(Promotions, TheApplicationsThatTheTipsNameAreAmongThem) {
    EXPECT_THAT(promotionTitles(),
                ::testing::IsSupersetOf({"frameweave", "stillreel", "Flipstep"}));
}

TEST(Promotions, EachHasAPictureOfItsTitle) {
    for (const std::string& title : promotionTitles()) {
        EXPECT_TRUE(std::filesystem::exists(std::string(PICTURES_FOLDER) + "/" + title + ".svg"))
            << title;
    }
}

} // namespace
} // namespace vistrane
