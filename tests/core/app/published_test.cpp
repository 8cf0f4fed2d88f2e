#include <thread>

#include <gtest/gtest.h>

#include "core/app/Published.h"

namespace vistrane {
namespace {

TEST(Published, IsEmptyAtFirst) {
    const Published<int> value;
    EXPECT_EQ(value.load(), nullptr);
}

TEST(Published, AReaderKeepsWhatItHasLoadedWhenTheValueIsReplaced) {
    Published<const std::string> value;
    value.store(std::make_shared<const std::string>("old"));
    const auto read = value.load();
    value.store(std::make_shared<const std::string>("new"));
    EXPECT_EQ(*read, "old");
    EXPECT_EQ(*value.load(), "new");
}

TEST(Published, AReplacedValueIsReleased) {
    Published<int> value;
    value.store(std::make_shared<int>(1));
    const std::weak_ptr<int> old = value.load();
    value.store(nullptr);
    EXPECT_TRUE(old.expired());
}

TEST(Published, AReaderSeesOnlyWholeValuesWhileTheyAreReplaced) {
    Published<const std::pair<int, int>> value;
    value.store(std::make_shared<const std::pair<int, int>>(0, 0));
    std::thread writer([&] {
        for (int number = 1; number <= 1000; ++number) {
            value.store(std::make_shared<const std::pair<int, int>>(number, number));
        }
    });
    int last = 0;
    while (last < 1000) {
        const auto read = value.load();
        EXPECT_EQ(read->first, read->second);
        EXPECT_GE(read->first, last);
        last = read->first;
    }
    writer.join();
}

} // namespace
} // namespace vistrane
