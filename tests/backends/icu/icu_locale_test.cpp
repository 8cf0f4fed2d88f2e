#include "backends/icu/IcuLocale.h"

#include <cstdlib>
#include <random>
#include <thread>

#include "tests/contract/LocaleContract.h"
#include "tests/support/Environment.h"

namespace vistrane {
namespace {

struct IcuLocaleBackend {
    std::shared_ptr<const NSLocale> locale() { return std::make_shared<IcuLocale>("en_US"); }
};

constexpr std::uint32_t options = 833;

NSComparisonResult compare(const NSLocale& locale, const std::string& first,
                           const std::string& second) {
    return locale.compare(first, second, options, {0, first.size()});
}

NSComparisonResult compare(const char* locale, const std::string& first,
                           const std::string& second) {
    return compare(IcuLocale(locale), first, second);
}

/// Pieces whose combinations are often equal to the collation, and that together meet every rule.
const char* const pieces[] = {
    "a",    "A",      "b",      "0",          "00",     "1",      "10",           "9",
    "-",    ".",      " ",      "_",          "é",      "e",      "e\u0301",      "Ａ",
    "１",   "ｶ",      "カ",     "ß",          "ss",     "\xff",   "\xc3",         "\x80",
    "\xf0", "İ",      "ı",      "\U0001F600", "\u0301", "\u0327", "\xed\xa0\x80", "\xc0\xaf",
    "\t",   "\u200b", "\u0660", "ch",         "lj"};

std::string randomName(std::mt19937& random) {
    std::string name;
    for (auto left = random() % 7; left > 0; --left) {
        name += pieces[random() % std::size(pieces)];
        if (random() % 16 == 0) {
            name += static_cast<char>(random() % 256);
        }
        if (random() % 16 == 0) {
            name += std::string(random() % 300, static_cast<char>('0' + random() % 2));
        }
    }
    return name;
}

/// Whether the order of three names has no contradiction.
void expectOrder(const NSLocale& locale, const std::string& a, const std::string& b,
                 const std::string& c) {
    const int ab = compare(locale, a, b);
    const int bc = compare(locale, b, c);
    const int ac = compare(locale, a, c);
    EXPECT_EQ(ab, -compare(locale, b, a));
    EXPECT_EQ(ab == NSOrderedSame, a == b);
    EXPECT_EQ(compare(locale, a, a), NSOrderedSame);
    if (ab <= 0 && bc <= 0) {
        EXPECT_EQ(ac, std::min(ab, bc)) << a << " | " << b << " | " << c;
    }
    if (ab >= 0 && bc >= 0) {
        EXPECT_EQ(ac, std::max(ab, bc)) << a << " | " << b << " | " << c;
    }
}

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Icu, LocaleContract, IcuLocaleBackend, contract::Names);

namespace {

TEST(IcuLocale, AnyBytesAreInAStrictWeakOrder) {
    std::mt19937 random(20260307);
    for (const char* name : {"en_US", "en_US_POSIX", "de_DE", "tr_TR", "ja_JP", "th_TH", "fr_CA"}) {
        const IcuLocale locale(name);
        for (int round = 0; round < 3000; ++round) {
            const std::string a = randomName(random);
            const std::string b = round % 3 == 0 ? a + randomName(random) : randomName(random);
            expectOrder(locale, a, b, randomName(random));
        }
    }
}

void expectSortedAsCompared(const NSLocale& locale, std::vector<std::string> texts) {
    auto expected = texts;
    std::sort(expected.begin(), expected.end(),
              [&](const std::string& first, const std::string& second) {
                  return compare(locale, first, second) == NSOrderedAscending;
              });
    locale.sort(texts, options);
    ASSERT_EQ(texts, expected);
}

TEST(IcuLocale, AnyBytesAreSortedAsTheyCompare) {
    std::mt19937 random(20260308);
    for (const char* name : {"en_US", "en_US_POSIX", "de_DE", "tr_TR", "ja_JP", "th_TH", "fr_CA",
                             "sv_SE", "cs_CZ", "hu_HU", "ko_KR", "zh_CN", "vi_VN", "ar_EG"}) {
        const IcuLocale locale(name);
        for (int round = 0; round < 120; ++round) {
            std::vector<std::string> texts;
            const std::string folder = round % 4 == 0 ? "" : "/" + randomName(random) + "/";
            for (auto left = random() % 100; left > 0; --left) {
                texts.push_back(folder + randomName(random));
            }
            SCOPED_TRACE(std::string(name) + ", round " + std::to_string(round));
            expectSortedAsCompared(locale, texts);
        }
    }
}

TEST(IcuLocale, TextsThatNeedMuchRoomAreSorted) {
    const IcuLocale locale("en_US");
    std::vector<std::string> texts;
    for (const std::size_t length : {200000U, 10U, 300000U, 70000U}) {
        for (const char* letter : {"b", "é", "a", "B"}) {
            std::string text;
            while (text.size() < length) {
                text += letter;
            }
            texts.push_back(text);
        }
    }
    expectSortedAsCompared(locale, texts);
}

// A pair of names that the collation calls equal is told apart by numbers at their ends.
bool areEqualToTheCollation(const char* locale, const std::string& first,
                            const std::string& second) {
    return compare(locale, first + " 1", second + " 2") == NSOrderedAscending &&
           compare(locale, first + " 2", second + " 1") == NSOrderedDescending;
}

TEST(IcuLocale, CaseWidthAndCompositionDoNotCount) {
    EXPECT_TRUE(areEqualToTheCollation("en_US", "frame", "ＦＲＡＭＥ"));
    EXPECT_EQ(compare("en_US", "a２", "a10"), NSOrderedAscending);
    EXPECT_TRUE(areEqualToTheCollation("en_US", "カ", "ｶ"));
    EXPECT_TRUE(areEqualToTheCollation("en_US", "é", "e\u0301"));
    // The same letter with its marks in either order.
    EXPECT_TRUE(areEqualToTheCollation("en_US", "a\u0327\u0301", "a\u0301\u0327"));
}

TEST(IcuLocale, NamesAreOrderedByTheRulesOfTheLanguage) {
    const std::string nines = "f" + std::string(99, '9') + ".png";
    const std::string aDigitMore = "f1" + std::string(99, '0') + ".png";
    const struct {
        std::vector<const char*> locales;
        std::string first;
        std::string second;
    } ascending[] = {
        {{"en_US"}, "e", "é"},
        // Acute comes before grave; its bytes come after.
        {{"en_US"}, "é", "è"},
        // Punctuation counts.
        {{"en_US", "th_TH", "C"}, "a-c", "ab"},
        {{"en_US", "th_TH", "C"}, "a b2", "a_b1"},
        // Long runs of digits compare by value.
        {{"en_US"}, nines, aDigitMore},
        {{"en_US"}, "f" + std::string(50, '0') + "7", "f8"},
        // Digits of other scripts continue a number. Both numbers are 0, so the letter decides.
        {{"en_US", "tr_TR", "ja_JP"}, "0e", "0\u0660é"},
        {{"en_US", "tr_TR", "ja_JP"}, "00e", "0\u0660é"},
        {{"en_US", "tr_TR", "ja_JP"}, "1\u0660", "19"},
        {{"en_US", "tr_TR", "ja_JP"}, "9", "1\u0660"},
        {{"en_US", "tr_TR", "ja_JP"}, "1\uFF11e", "11é"},
        {{"en_US", "tr_TR", "ja_JP"}, "11e", "1\uFF11é"},
        {{"sv_SE"}, "z", "ö"},
        {{"de_DE"}, "ö", "z"},
    };
    for (const auto& each : ascending) {
        for (const char* locale : each.locales) {
            EXPECT_EQ(compare(locale, each.first, each.second), NSOrderedAscending)
                << locale << ": " << each.first << ", " << each.second;
        }
    }
    // Dotted and dotless i are two letters in Turkish only.
    EXPECT_TRUE(areEqualToTheCollation("tr_TR", "I", "ı"));
    EXPECT_FALSE(areEqualToTheCollation("tr_TR", "I", "i"));
    EXPECT_TRUE(areEqualToTheCollation("en_US", "I", "i"));
}

TEST(IcuLocale, ThePosixLocaleIgnoresCaseToo) {
    const Environment all("LC_ALL", "C");
    const IcuLocale locale;
    EXPECT_EQ(compare(locale, "frame2", "Frame10"), NSOrderedAscending);
    EXPECT_EQ(compare(locale, "Frame1", "frame2"), NSOrderedAscending);
    EXPECT_EQ(compare(locale, "b", "C"), NSOrderedAscending);
}

TEST(IcuLocale, TheUsersLocaleNeedNotBeInstalledForTheCLibrary) {
    const Environment all("LC_ALL", "sv_SE.UTF-8");
    EXPECT_EQ(compare(IcuLocale(), "ö", "z"), NSOrderedDescending);
}

TEST(IcuLocale, ZeroBytesCount) {
    const std::string withZero("a\0b", 3);
    EXPECT_NE(compare("en_US", withZero, "ab"), NSOrderedSame);
    EXPECT_NE(compare("en_US", withZero, "a"), NSOrderedSame);
}

TEST(IcuLocale, ThreadsShareOneLocale) {
    const IcuLocale locale("en_US");
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 4; ++seed) {
        threads.emplace_back([&locale, seed] {
            std::mt19937 random(seed);
            for (int round = 0; round < 500; ++round) {
                const std::string name = randomName(random);
                EXPECT_EQ(compare(locale, name, name), NSOrderedSame);
                EXPECT_EQ(compare(locale, "frame2", "frame10"), NSOrderedAscending);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace vistrane
