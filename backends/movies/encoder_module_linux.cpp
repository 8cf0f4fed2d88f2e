#include "backends/movies/encoder_module.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

#include "backends/movies/movie_errors.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// Call right after the failure. Contains the dynamic linker's last message, which names the file.
NSError loadingError() {
    const char* const reason = ::dlerror();
    return movieError(AVErrorEncoderNotFound,
                      "The movie cannot be made: the H.264 encoder cannot be loaded (" +
                          shownText(reason != nullptr ? reason : "unknown reason") +
                          "). Install libavcodec with libx264, or reinstall Vistrane");
}

} // namespace

EncoderModuleResult encoderModule() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return loadEncoderModule((program.parent_path() / VISTRANE_ENCODER_MODULE).lexically_normal());
}

EncoderModuleResult loadEncoderModule(const std::string& path) {
    void* const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        return {nullptr, loadingError()};
    }
    const auto entry = reinterpret_cast<decltype(&vistraneEncoderModule)>(
        ::dlsym(library, "vistraneEncoderModule"));
    if (entry == nullptr) {
        return {nullptr, loadingError()};
    }
    return {entry(), std::nullopt};
}

} // namespace vistrane
