#pragma once

#include <string>
#include <vector>

namespace vistrane {

/// Another application of the maker's: its title, which is also the name of its picture in the
/// resources, and its page in the store.
struct Promotion {
    std::string title;
    std::string storeAddress;
};

/// What the menus show, in their order.
const std::vector<std::string>& promotionTitles();

/// What a chosen title opens. The titles are those of `promotionTitles`, in the same order: the
/// two are written out one beside the other on purpose, and a test compares them.
const std::vector<Promotion>& promotions();

/// A search of the store that lists all of the maker's applications.
extern const char developerSearchLink[];
/// This application's own page in the store.
extern const char ownStorePage[];
/// Where support mails and feature requests go.
extern const char supportMailAddress[];

} // namespace vistrane
