#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

// Owners of libav's objects, and what concerns all of its codecs.
namespace vlm::platform::media {

// Its own lines would appear in the host's log; results say what is wrong with a stream.
inline void silence(AVCodecContext& context) {
  context.log_level_offset = 2 * (AV_LOG_DEBUG - AV_LOG_QUIET);
}

struct FreeLibav {
  void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
  void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
  void operator()(SwrContext* resampler) const noexcept { swr_free(&resampler); }
  void operator()(SwsContext* scaler) const noexcept { sws_freeContext(scaler); }
  void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
};

using AVCodecContextPtr = std::unique_ptr<AVCodecContext, FreeLibav>;
using AVFramePtr = std::unique_ptr<AVFrame, FreeLibav>;
using AVPacketPtr = std::unique_ptr<AVPacket, FreeLibav>;
using SwrContextPtr = std::unique_ptr<SwrContext, FreeLibav>;
using SwsContextPtr = std::unique_ptr<SwsContext, FreeLibav>;

}  // namespace vlm::platform::media
