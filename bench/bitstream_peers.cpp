#include "bitstream_peers.h"

#include <gst/base/gstbytereader.h>

#include <cstdlib>
#include <cstring>

extern "C" {
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>

// Exported by libavcodec for its sister libraries; its header is not installed.
const std::uint8_t* avpriv_find_start_code(const std::uint8_t* begin, const std::uint8_t* end,
                                           std::uint32_t* state);
}

namespace vlm::bench {
namespace {

void require(bool good) {
  if (!good) std::abort();
}

void setExtradata(AVCodecParameters& codec, codec::ByteView bytes) {
  codec.codec_type = AVMEDIA_TYPE_VIDEO;
  codec.codec_id = AV_CODEC_ID_H264;
  codec.width = 1920;
  codec.height = 1080;
  codec.extradata =
      static_cast<std::uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  std::memcpy(codec.extradata, bytes.data(), bytes.size());
  codec.extradata_size = static_cast<int>(bytes.size());
}

// The packet points at the caller's bytes instead of copying them.
void lend(AVPacket& packet, codec::ByteView bytes) {
  packet.data = const_cast<std::uint8_t*>(bytes.data());
  packet.size = static_cast<int>(bytes.size());
}

}  // namespace

std::size_t countWithFfmpeg(codec::ByteView stream) {
  const auto* at = stream.data();
  const auto* const end = at + stream.size();
  std::size_t count = 0;
  while (at < end) {
    std::uint32_t state = ~0U;
    at = avpriv_find_start_code(at, end, &state);
    if ((state & 0xFFFFFF00) == 0x100) ++count;
  }
  return count;
}

std::size_t countWithGstreamer(codec::ByteView stream) {
  GstByteReader reader;
  gst_byte_reader_init(&reader, stream.data(), static_cast<guint>(stream.size()));
  std::size_t count = 0;
  for (guint at = 0; at + 4 <= stream.size(); ++count) {
    const gint found = static_cast<gint>(gst_byte_reader_masked_scan_uint32(
        &reader, 0xFFFFFF00, 0x00000100, at, static_cast<guint>(stream.size()) - at));
    if (found < 0) break;
    at = static_cast<guint>(found) + 3;
  }
  return count;
}

FfmpegLengthPrefixer::FfmpegLengthPrefixer(codec::ByteView parameterSets)
    : packet_(av_packet_alloc()) {
  require(avformat_alloc_output_context2(&muxer_, nullptr, "mp4", nullptr) >= 0);
  auto* const stream = avformat_new_stream(muxer_, nullptr);
  stream->time_base = {1, 90000};
  setExtradata(*stream->codecpar, parameterSets);
  constexpr int kBuffer = 1 << 16;
  muxer_->pb = avio_alloc_context(
      static_cast<unsigned char*>(av_malloc(kBuffer)), kBuffer, 1, nullptr, nullptr,
      [](void*, std::uint8_t*, int size) { return size; },
      [](void*, std::int64_t offset, int) { return offset; });
  require(avformat_write_header(muxer_, nullptr) >= 0);
}

FfmpegLengthPrefixer::~FfmpegLengthPrefixer() {
  av_packet_free(&packet_);
  av_freep(&muxer_->pb->buffer);
  avio_context_free(&muxer_->pb);
  avformat_free_context(muxer_);
}

void FfmpegLengthPrefixer::convert(codec::ByteView accessUnit) {
  lend(*packet_, accessUnit);
  packet_->pts = packet_->dts = time_;
  packet_->duration = 3000;
  time_ += packet_->duration;
  require(av_write_frame(muxer_, packet_) >= 0);
}

FfmpegAnnexBWriter::FfmpegAnnexBWriter(codec::ByteView avcConfiguration)
    : packet_(av_packet_alloc()) {
  require(av_bsf_alloc(av_bsf_get_by_name("h264_mp4toannexb"), &filter_) >= 0);
  setExtradata(*filter_->par_in, avcConfiguration);
  require(av_bsf_init(filter_) >= 0);
}

FfmpegAnnexBWriter::~FfmpegAnnexBWriter() {
  av_packet_free(&packet_);
  av_bsf_free(&filter_);
}

void FfmpegAnnexBWriter::convert(codec::ByteView sample) {
  auto* const buffer = av_buffer_create(
      const_cast<std::uint8_t*>(sample.data()), sample.size(), [](void*, std::uint8_t*) {}, nullptr,
      AV_BUFFER_FLAG_READONLY);
  packet_->buf = buffer;
  lend(*packet_, sample);
  require(av_bsf_send_packet(filter_, packet_) >= 0);
  require(av_bsf_receive_packet(filter_, packet_) >= 0);
  av_packet_unref(packet_);
}

}  // namespace vlm::bench
