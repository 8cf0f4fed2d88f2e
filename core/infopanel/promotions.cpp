#include "core/infopanel/promotions.h"

namespace vistrane {

// Placeholders on domains that are reserved for examples. Replace them before publishing the
// program.

const char developerSearchLink[] = "https://store.example.com/search?developer=mantisQRX";
const char ownStorePage[] = "https://store.example.com/app/vistrane";
const char supportMailAddress[] = "support@vistrane.example.com";

const std::vector<std::string>& promotionTitles() {
    static const std::vector<std::string> titles{
        "frameweave", "stillreel", "Flipstep",    "Framefold",  "Hourglide", "Lumaladder",
        "Moonsluice", "Pixelquay", "Shutterbead", "Tickstitch", "Tidestack",
    };
    return titles;
}

const std::vector<Promotion>& promotions() {
    static const std::vector<Promotion> rows{
        {"frameweave", "https://store.example.com/app/frameweave"},
        {"stillreel", "https://store.example.com/app/stillreel"},
        {"Flipstep", "https://store.example.com/app/flipstep"},
        {"Framefold", "https://store.example.com/app/framefold"},
        {"Hourglide", "https://store.example.com/app/hourglide"},
        {"Lumaladder", "https://store.example.com/app/lumaladder"},
        {"Moonsluice", "https://store.example.com/app/moonsluice"},
        {"Pixelquay", "https://store.example.com/app/pixelquay"},
        {"Shutterbead", "https://store.example.com/app/shutterbead"},
        {"Tickstitch", "https://store.example.com/app/tickstitch"},
        {"Tidestack", "https://store.example.com/app/tidestack"},
    };
    return rows;
}

} // namespace vistrane
