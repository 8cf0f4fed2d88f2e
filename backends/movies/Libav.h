#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
}

namespace vistrane {

/// What this program calls of libavcodec and libavutil, under the libraries' own names.
///
/// The program is not linked with them: with the sixty libraries that they need themselves they
/// would take more than half of the time until its first line runs, and most runs make no movie.
struct Libav {
    decltype(&::av_codec_is_encoder) av_codec_is_encoder;
    decltype(&::av_codec_iterate) av_codec_iterate;
    decltype(&::av_packet_alloc) av_packet_alloc;
    decltype(&::av_packet_free) av_packet_free;
    decltype(&::av_packet_unref) av_packet_unref;
    decltype(&::avcodec_alloc_context3) avcodec_alloc_context3;
    decltype(&::avcodec_find_encoder_by_name) avcodec_find_encoder_by_name;
    decltype(&::avcodec_free_context) avcodec_free_context;
    decltype(&::avcodec_open2) avcodec_open2;
    decltype(&::avcodec_receive_packet) avcodec_receive_packet;
    decltype(&::avcodec_send_frame) avcodec_send_frame;

    decltype(&::av_dict_free) av_dict_free;
    decltype(&::av_dict_set) av_dict_set;
    decltype(&::av_frame_alloc) av_frame_alloc;
    decltype(&::av_frame_free) av_frame_free;
    decltype(&::av_frame_get_buffer) av_frame_get_buffer;
    decltype(&::av_frame_is_writable) av_frame_is_writable;
    decltype(&::av_strerror) av_strerror;
};

/// The versions that this program was built with.
extern const char libavcodecName[];
extern const char libavutilName[];

/// Loads them with the first call, which takes a moment. Null when one of them is not there. They
/// stay as long as the process. Any thread.
const Libav* libav();

/// Fills in `functions` from libraries of these names. Whether all of them were found.
bool loadLibav(const char* codecName, const char* utilName, Libav& functions);

} // namespace vistrane
