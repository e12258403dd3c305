#include "bench/quality/judge.h"

#include <libyuv.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <stdexcept>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace vlm::bench {
namespace {

constexpr double kMostPsnr = 99;

void check(int status, const char* what) {
  if (status < 0) throw std::runtime_error(std::string("the judge can't ") + what);
}

double value(const AVFrame& frame, const char* key) {
  const auto* entry = av_dict_get(frame.metadata, key, nullptr, 0);
  if (entry == nullptr) throw std::runtime_error("the judge found no value");
  return std::min(std::strtod(entry->value, nullptr), kMostPsnr);
}

AVFilterInOut* endOf(const char* label, AVFilterContext* filter, AVFilterInOut* next) {
  AVFilterInOut* end = avfilter_inout_alloc();
  end->name = av_strdup(label);
  end->filter_ctx = filter;
  end->pad_idx = 0;
  end->next = next;
  return end;
}

Frame planarFrame(const Picture& picture) {
  Frame frame(av_frame_alloc());
  frame->format = AV_PIX_FMT_YUV420P;
  frame->width = static_cast<int>(picture.width);
  frame->height = static_cast<int>(picture.height);
  check(av_frame_get_buffer(frame.get(), 0), "get memory");
  const auto width = static_cast<int>(picture.width);
  libyuv::NV12ToI420(picture.luma(), width, picture.chroma(), width, frame->data[0],
                     frame->linesize[0], frame->data[1], frame->linesize[1], frame->data[2],
                     frame->linesize[2], width, frame->height);
  return frame;
}

}  // namespace

Judge::Judge(std::size_t width, std::size_t height)
    : shown_(av_frame_alloc()), graph_(avfilter_graph_alloc()) {
  const auto* codec = avcodec_find_decoder(AV_CODEC_ID_H264);
  decoder_.reset(avcodec_alloc_context3(codec));
  decoder_->flags |= AV_CODEC_FLAG_LOW_DELAY;
  decoder_->thread_count = 1;
  check(avcodec_open2(decoder_.get(), codec, nullptr), "open a decoder");

  stream_ = addSource("stream", width, height);
  source_ = addSource("source", width, height);
  check(avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "sink", nullptr,
                                     nullptr, graph_.get()),
        "make a sink");
  AVFilterInOut* outputs = endOf("stream", stream_, endOf("source", source_, nullptr));
  AVFilterInOut* inputs = endOf("judged", sink_, nullptr);
  check(avfilter_graph_parse_ptr(graph_.get(),
                                 "[source]split[a][b];[stream][a]psnr[half];[half][b]ssim[judged]",
                                 &inputs, &outputs, nullptr),
        "read its filters");
  avfilter_inout_free(&inputs);
  avfilter_inout_free(&outputs);
  graph_->nb_threads = 1;
  check(avfilter_graph_config(graph_.get(), nullptr), "connect its filters");
}

AVFilterContext* Judge::addSource(const char* name, std::size_t width, std::size_t height) {
  const std::string arguments = "video_size=" + std::to_string(width) + "x" +
                                std::to_string(height) +
                                ":pix_fmt=yuv420p:time_base=1/30:pixel_aspect=1/1";
  AVFilterContext* filter = nullptr;
  check(avfilter_graph_create_filter(&filter, avfilter_get_by_name("buffer"), name,
                                     arguments.c_str(), nullptr, graph_.get()),
        "make a source");
  return filter;
}

void Judge::show(std::span<const std::uint8_t> unit) {
  const Packet packet(av_packet_alloc());
  check(av_new_packet(packet.get(), static_cast<int>(unit.size())), "get memory");
  std::ranges::copy(unit, packet->data);
  check(avcodec_send_packet(decoder_.get(), packet.get()), "read an access unit");
  check(avcodec_receive_frame(decoder_.get(), shown_.get()), "decode a picture");
}

void Judge::compare(const Picture& source) {
  const Frame shown(av_frame_clone(shown_.get()));
  const Frame wanted = planarFrame(source);
  av_dict_free(&shown->metadata);
  shown->pts = wanted->pts = compared_++;
  check(av_buffersrc_add_frame(stream_, shown.get()), "take a picture");
  check(av_buffersrc_add_frame(source_, wanted.get()), "take a source");
  collect();
}

void Judge::collect() {
  for (;;) {
    const Frame judged(av_frame_alloc());
    if (av_buffersink_get_frame(sink_, judged.get()) < 0) return;
    results_.push_back({value(*judged, "lavfi.psnr.psnr_avg"), value(*judged, "lavfi.ssim.All")});
  }
}

std::vector<Quality> Judge::finish() {
  check(av_buffersrc_add_frame(stream_, nullptr), "end");
  check(av_buffersrc_add_frame(source_, nullptr), "end");
  collect();
  return results_;
}

void Judge::save(const std::string& file) const {
  std::ofstream out(file, std::ios::binary);
  for (int plane = 0; plane < 3; ++plane) {
    const int shift = plane == 0 ? 0 : 1;
    for (int row = 0; row < shown_->height >> shift; ++row) {
      out.write(reinterpret_cast<const char*>(shown_->data[plane] + row * shown_->linesize[plane]),
                shown_->width >> shift);
    }
  }
}

Quality judgeOne(std::span<const std::uint8_t> unit, const Picture& source) {
  Judge judge(source.width, source.height);
  judge.show(unit);
  judge.compare(source);
  return judge.finish().front();
}

}  // namespace vlm::bench
