#include "backends/movies/Libav.h"

#include <dlfcn.h>

extern "C" {
#include <libavcodec/version.h>
#include <libavutil/macros.h>
#include <libavutil/version.h>
}

namespace vistrane {

namespace {

/// A library, and whether all that was looked for is in there.
class Library {
public:
    explicit Library(const char* name)
        : handle_(::dlopen(name, RTLD_LAZY | RTLD_LOCAL)), isWhole_(handle_ != nullptr) {}

    template <typename Function>
    void find(const char* name, Function& function) {
        if (handle_ != nullptr) {
            function = reinterpret_cast<Function>(::dlsym(handle_, name));
            isWhole_ = isWhole_ && function != nullptr;
        }
    }

    bool isWhole() const { return isWhole_; }

private:
    void* const handle_;
    bool isWhole_;
};

} // namespace

const char libavcodecName[] = "libavcodec.so." AV_STRINGIFY(LIBAVCODEC_VERSION_MAJOR);
const char libavutilName[] = "libavutil.so." AV_STRINGIFY(LIBAVUTIL_VERSION_MAJOR);

const Libav* libav() {
    static Libav functions{};
    static const bool isThere = loadLibav(libavcodecName, libavutilName, functions);
    return isThere ? &functions : nullptr;
}

bool loadLibav(const char* codecName, const char* utilName, Libav& functions) {
    Library codec(codecName);
    codec.find("av_codec_is_encoder", functions.av_codec_is_encoder);
    codec.find("av_codec_iterate", functions.av_codec_iterate);
    codec.find("av_packet_alloc", functions.av_packet_alloc);
    codec.find("av_packet_free", functions.av_packet_free);
    codec.find("av_packet_unref", functions.av_packet_unref);
    codec.find("avcodec_alloc_context3", functions.avcodec_alloc_context3);
    codec.find("avcodec_find_encoder_by_name", functions.avcodec_find_encoder_by_name);
    codec.find("avcodec_free_context", functions.avcodec_free_context);
    codec.find("avcodec_open2", functions.avcodec_open2);
    codec.find("avcodec_receive_packet", functions.avcodec_receive_packet);
    codec.find("avcodec_send_frame", functions.avcodec_send_frame);

    Library util(utilName);
    util.find("av_dict_free", functions.av_dict_free);
    util.find("av_dict_set", functions.av_dict_set);
    util.find("av_frame_alloc", functions.av_frame_alloc);
    util.find("av_frame_free", functions.av_frame_free);
    util.find("av_frame_get_buffer", functions.av_frame_get_buffer);
    util.find("av_frame_is_writable", functions.av_frame_is_writable);
    util.find("av_strerror", functions.av_strerror);
    return codec.isWhole() && util.isWhole();
}

} // namespace vistrane
