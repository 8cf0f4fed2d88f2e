// A libavcodec without any encoder, as some systems have it: every function that the encoder module
// asks for, and none that finds anything. The module calls only the first three.
extern "C" {
int av_codec_is_encoder(const void*) {
    return 0;
}
const void* av_codec_iterate(void**) {
    return nullptr;
}
const void* avcodec_find_encoder_by_name(const char*) {
    return nullptr;
}
void av_packet_alloc() {}
void av_packet_free() {}
void av_packet_unref() {}
void avcodec_alloc_context3() {}
void avcodec_free_context() {}
void avcodec_open2() {}
void avcodec_receive_packet() {}
void avcodec_send_frame() {}
}
