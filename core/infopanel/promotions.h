#pragma once

#include <string>
#include <vector>

namespace vistrane {

/// Another application by the same developer: its title, which is also the name of its picture in
/// the resources, and its store page.
struct Promotion {
    std::string title;
    std::string storeAddress;
};

/// The promotions in the order of the menus.
const std::vector<std::string>& promotionTitles();

/// The store page of each title. The titles repeat those of `promotionTitles` in the same order, on
/// purpose; a test compares them.
const std::vector<Promotion>& promotions();

/// A store search that lists all of the developer's applications.
extern const char developerSearchLink[];
/// This application's own page in the store.
extern const char ownStorePage[];
/// The address for support and feature requests.
extern const char supportMailAddress[];

} // namespace vistrane
