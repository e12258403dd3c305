#include <stdexcept>
#include <string>

#include "bench/quality/encoders.h"
#include "bench/quality/libav.h"

namespace vlm::bench {
namespace {

using Options = std::vector<std::pair<const char*, std::string>>;

class FFmpeg final : public QualityEncoder {
 public:
  FFmpeg(std::size_t width, std::size_t height, int fps, const Options& options)
      : frame_(av_frame_alloc()), packet_(av_packet_alloc()) {
    const auto* codec = avcodec_find_encoder_by_name("libx264");
    context_.reset(avcodec_alloc_context3(codec));
    context_->width = static_cast<int>(width);
    context_->height = static_cast<int>(height);
    context_->pix_fmt = AV_PIX_FMT_NV12;
    context_->time_base = {1, 1'000'000'000};
    context_->framerate = {fps, 1};
    context_->thread_count = 1;
    context_->gop_size = 30000;
    AVDictionary* dictionary = nullptr;
    av_dict_set(&dictionary, "preset", "ultrafast", 0);
    av_dict_set(&dictionary, "tune", "zerolatency", 0);
    for (const auto& [key, value] : options) av_dict_set(&dictionary, key, value.c_str(), 0);
    const int status = avcodec_open2(context_.get(), codec, &dictionary);
    av_dict_free(&dictionary);
    if (status < 0) throw std::runtime_error("FFmpeg has no such encoder");
  }

  void take(const Picture& picture) override {
    av_frame_unref(frame_.get());
    frame_->format = AV_PIX_FMT_NV12;
    frame_->width = static_cast<int>(picture.width);
    frame_->height = static_cast<int>(picture.height);
    if (av_frame_get_buffer(frame_.get(), 0) < 0) throw std::bad_alloc();
    for (std::size_t row = 0; row < picture.height; ++row) {
      std::copy_n(picture.luma() + row * picture.width, picture.width,
                  frame_->data[0] + row * static_cast<std::size_t>(frame_->linesize[0]));
    }
    for (std::size_t row = 0; row < picture.height / 2; ++row) {
      std::copy_n(picture.chroma() + row * picture.width, picture.width,
                  frame_->data[1] + row * static_cast<std::size_t>(frame_->linesize[1]));
    }
  }

  Bytes encode(bool, std::int64_t ptsNs) override {
    frame_->pts = ptsNs;
    if (avcodec_send_frame(context_.get(), frame_.get()) < 0 ||
        avcodec_receive_packet(context_.get(), packet_.get()) < 0) {
      throw std::runtime_error("FFmpeg gave no access unit");
    }
    Bytes unit(packet_->data, packet_->data + packet_->size);
    av_packet_unref(packet_.get());
    return unit;
  }

 private:
  CodecContext context_;
  Frame frame_;
  Packet packet_;
};

}  // namespace

std::unique_ptr<QualityEncoder> makeFFmpeg(const EncoderSettings& settings) {
  const int rate = settings.bitsPerSecond;
  const int buffer = settings.lowLatency ? 2 * rate / settings.fps : rate;
  return std::make_unique<FFmpeg>(settings.width, settings.height, settings.fps,
                                  Options{{"b", std::to_string(rate)},
                                          {"maxrate", std::to_string(rate / 4 * 5)},
                                          {"bufsize", std::to_string(buffer)}});
}

Bytes encodeOnce(const Picture& picture, int quantiser) {
  FFmpeg encoder(picture.width, picture.height, 30, {{"qp", std::to_string(quantiser)}});
  encoder.take(picture);
  return encoder.encode(false, 0);
}

}  // namespace vlm::bench
