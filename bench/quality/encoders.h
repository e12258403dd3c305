#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench/quality/picture.h"

namespace vlm::bench {

struct EncoderSettings {
  std::size_t width = 0;
  std::size_t height = 0;
  int fps = 30;
  int bitsPerSecond = 0;
  bool lowLatency = false;
};

using Bytes = std::vector<std::uint8_t>;

// One encoder at work in simulated time.
class QualityEncoder {
 public:
  virtual ~QualityEncoder() = default;
  // Makes ready what a host has in hand already when it submits a new picture.
  virtual void take(const Picture& picture) = 0;
  // The picture that was taken last as one access unit, of start codes. `repeated` says that it was
  // submitted before.
  virtual Bytes encode(bool repeated, std::int64_t ptsNs) = 0;
  // From the next picture on.
  virtual void setBitRate(int) {}
  // Whether a picture that shows nothing new is worth submitting.
  virtual bool wantsRepeats() const { return true; }
};

// Ours through the public header, with pixel buffers as captures make them.
std::unique_ptr<QualityEncoder> makeOurs(const EncoderSettings& settings);
// x264 through FFmpeg: preset ultrafast, tune zerolatency, and a VBV of one second, or of two
// frames in low latency, at 1.25 of the rate.
std::unique_ptr<QualityEncoder> makeFFmpeg(const EncoderSettings& settings);
// x264enc in a pipeline of GStreamer, with the same preset, tune and size of the VBV.
std::unique_ptr<QualityEncoder> makeGStreamer(const EncoderSettings& settings);
// One picture by the same x264 through FFmpeg at a fixed quantiser.
Bytes encodeOnce(const Picture& picture, int quantiser);

}  // namespace vlm::bench
