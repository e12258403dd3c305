#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "codec/bitstream.h"

struct AVBSFContext;
struct AVFormatContext;
struct AVIOContext;
struct AVPacket;

// What other libraries offer for the same work, as far as it can be called from outside.
namespace vlm::bench {

// Each counts the start codes of a stream.
std::size_t countWithFfmpeg(codec::ByteView stream);     // the scanner behind its H.264 parser
std::size_t countWithGstreamer(codec::ByteView stream);  // the scanner behind h264parse

// Annex B to length-prefixed as FFmpeg does it when it writes MP4: the conversion itself is
// internal to that muxer, so the muxer runs whole, over a sink that drops the bytes. What it does
// beside the conversion is an index entry for each packet.
class FfmpegLengthPrefixer {
 public:
  explicit FfmpegLengthPrefixer(codec::ByteView parameterSets);
  ~FfmpegLengthPrefixer();
  void convert(codec::ByteView accessUnit);

 private:
  AVFormatContext* muxer_ = nullptr;
  AVPacket* packet_ = nullptr;
  std::int64_t time_ = 0;
};

// Length-prefixed to Annex B with FFmpeg's bit stream filter.
class FfmpegAnnexBWriter {
 public:
  explicit FfmpegAnnexBWriter(codec::ByteView avcConfiguration);
  ~FfmpegAnnexBWriter();
  void convert(codec::ByteView sample);

 private:
  AVBSFContext* filter_ = nullptr;
  AVPacket* packet_ = nullptr;
};

}  // namespace vlm::bench
