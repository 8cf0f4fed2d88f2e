#include "core/infopanel/tip_pages.h"

#include <array>

namespace vistrane {

const TipPage& tipPage(std::int32_t number) {
    static const std::array<TipPage, tipPageCount> pages{{
        {"tip1.png",
         "  Benefit from the quality of modern professional cameras, time LAPSE movie making "
         "is easy and efficient...  *As the quality of the captured images could be too high "
         "from some cameras, We added an option to lower the captured picture resolution or "
         "video quality to prevent crashing of those old Macs.\n\n"
         "If you are evaluating Vistrane on your MacBook Pro and/or MacBook Air, please grant "
         "access to your default camera."},
        {"tip2.png",
         "1. Your file saving folder is shared for all projects, it will be reused each time "
         "Vistrane start, all saved pictures located in this folder will be involved in movie "
         "compiling.\n\n"
         "2. Please set the time-lapse interval by input hours, minutes, and seconds "
         "separately. Please double-check the total seconds calculated and displayed here."},
        {"tip3.png",
         "3. FPS adjust slider controls the FPS rate of both the preview video and the final "
         "generated movie.\n"
         "4. compiling the final movie would take some time and the process can NOT be "
         "terminated if the resolution of each frame image is too high, please be sure to use "
         "the auto preview function (5) or simply manually slide the preview bar before the "
         "final movie compiling."},
        {"tip4.png",
         "Actually, you can copy your time-lapse photos to the project folder and use the "
         "compiling function only. Yes, it works, but for better result, please search app "
         "named 'frameweave', 'stillreel' and 'Flipstep'.\n\n"
         "The pictures of these tips were taken at the developer's own desk.\n\n"
         "mantisQRX"},
    }};
    static const TipPage none{"tip5.png", ""};
    const bool isPage = number >= 1 && number <= tipPageCount;
    return isPage ? pages[static_cast<std::size_t>(number - 1)] : none;
}

} // namespace vistrane
