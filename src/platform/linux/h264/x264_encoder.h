#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/h264/encoder_input.h"

struct x264_t;

namespace vlm::platform::h264 {

// One H.264 stream: Main profile, CABAC, a single reference, nothing reordered and
// no delay, so that every picture is out when encode() returns. The quantiser of every picture is
// the caller's choice. Used by one thread at a time.
class X264Encoder {
 public:
  static constexpr std::size_t kLengthPrefix = 4;  // bytes before each NAL unit

  struct Format {
    std::size_t width;  // even, as the height
    std::size_t height;
    media::YCbCrEncoding encoding;
    double framesPerSecond;
    int worstQuantiser;
    int level;  // ten times its number
    friend bool operator==(const Format&, const Format&) = default;
  };

  // The lowest level that allows for the format's size and frame rate, and for the bit rate.
  static int levelFor(const Format& format, double bitsPerSecond);

  // Null when no such stream can be made.
  static std::unique_ptr<X264Encoder> open(const Format& format);

  const Format& format() const noexcept { return format_; }
  // The sequence and the picture parameter set, whole NAL units.
  std::span<const std::vector<std::uint8_t>> parameterSets() const noexcept {
    return parameterSets_;
  }

  // What decoders show after the last picture; nothing before the first. Valid until the next one.
  const std::optional<YCbCrPicture>& shown() const noexcept { return shown_; }

  // One picture as NAL units that are preceded by their lengths; nothing when the encoder
  // failed. `constant` has an entry for every macroblock, true for those whose pixels are those of
  // the picture before; it may be empty.
  std::optional<std::vector<std::uint8_t>> encode(const YCbCrPicture& picture,
                                                  std::span<std::uint8_t> constant, int quantiser,
                                                  bool keyFrame);

 private:
  struct Close {
    void operator()(x264_t* encoder) const noexcept;
  };

  X264Encoder(const Format& format, x264_t* encoder) : format_(format), encoder_(encoder) {}
  bool readParameterSets();

  const Format format_;
  const std::unique_ptr<x264_t, Close> encoder_;
  std::vector<std::vector<std::uint8_t>> parameterSets_;
  std::int64_t pictures_ = 0;
  std::optional<YCbCrPicture> shown_;
};

}  // namespace vlm::platform::h264
