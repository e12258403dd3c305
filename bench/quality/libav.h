#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
}

namespace vlm::bench {

struct FreeLibav {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
using CodecContext = std::unique_ptr<AVCodecContext, FreeLibav>;
using Frame = std::unique_ptr<AVFrame, FreeLibav>;
using Packet = std::unique_ptr<AVPacket, FreeLibav>;
using FilterGraph = std::unique_ptr<AVFilterGraph, FreeLibav>;

}  // namespace vlm::bench
