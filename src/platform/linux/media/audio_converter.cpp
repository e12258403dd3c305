#include "platform/linux/media/audio_converter.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <array>
#include <utility>
#include <vector>

#include "platform/linux/media/libav.h"
#include "platform/portable/audio_format.h"

namespace vlm::platform::media {
namespace {

// Of a buffer, as far as the resampler can see.
constexpr std::uint32_t kMostChannels = 64;

AVSampleFormat formatOf(const PcmShape& format) {
  return format.interleaved ? AV_SAMPLE_FMT_FLT : AV_SAMPLE_FMT_FLTP;
}

bool canConvert(const PcmShape& format) {
  return format.commonFormat == AVAudioCommonFormat::pcmFloat32 && format.sampleRate >= 1 &&
         format.channelCount >= 1 && format.channelCount <= kMostChannels;
}

SwrContextPtr makeResampler(const PcmShape& from, const PcmShape& to) {
  if (!canConvert(from) || !canConvert(to)) return nullptr;
  AVChannelLayout input{};
  AVChannelLayout output{};
  av_channel_layout_default(&input, static_cast<int>(from.channelCount));
  av_channel_layout_default(&output, static_cast<int>(to.channelCount));
  SwrContext* context = nullptr;
  swr_alloc_set_opts2(&context, &output, formatOf(to), static_cast<int>(to.sampleRate), &input,
                      formatOf(from), static_cast<int>(from.sampleRate), 0, nullptr);
  SwrContextPtr resampler(context);
  // Channels that are folded into one may add up to full scale and not above.
  if (!resampler || av_opt_set_double(context, "rematrix_maxval", 1.0, 0) < 0) return nullptr;
  // Where the places of many channels are not known, all count the same.
  const std::vector<double> mean(std::size_t{from.channelCount} * to.channelCount,
                                 1.0 / from.channelCount);
  if (input.order == AV_CHANNEL_ORDER_UNSPEC &&
      swr_set_matrix(context, mean.data(), static_cast<int>(from.channelCount)) < 0) {
    return nullptr;
  }
  return swr_init(context) >= 0 ? std::move(resampler) : nullptr;
}

// Where a buffer's samples are, as the resampler wants to know it.
using Planes = std::array<std::uint8_t*, kMostChannels>;

Planes planesOf(AVAudioPCMBuffer& buffer, std::uint32_t fromFrame) {
  const auto format = shapeOf(buffer.format());
  const std::size_t step = format.interleaved ? format.channelCount : 1;
  Planes planes{};
  for (std::uint32_t channel = 0; channel < format.channelCount; ++channel) {
    planes[channel] =
        reinterpret_cast<std::uint8_t*>(buffer.floatChannelData(channel) + fromFrame * step);
  }
  return planes;
}

class Converter final : public AVAudioConverter {
 public:
  Converter(SwrContextPtr resampler, const PcmShape& from)
      : resampler_(std::move(resampler)), from_(from) {}

  std::optional<NSError> convertToBuffer(AVAudioPCMBuffer& output,
                                         const AVAudioConverterInputBlock& input) override {
    output.setFrameLength(0);
    auto status = AVAudioConverterInputStatus::haveData;
    while (const auto piece = input(status)) {
      if (shapeOf(piece->format()) != from_) return NSError{"the input has another format"};
      auto from = planesOf(*piece, 0);
      if (!convert(output, from.data(), piece->frameLength())) {
        return NSError{"the samples can't be converted"};
      }
    }
    return std::nullopt;
  }

 private:
  // What finds no room in the output comes with the next conversion.
  bool convert(AVAudioPCMBuffer& output, std::uint8_t** from, std::uint32_t frames) {
    auto to = planesOf(output, output.frameLength());
    const auto room = output.frameCapacity() - output.frameLength();
    const int made = swr_convert(resampler_.get(), to.data(), static_cast<int>(room),
                                 const_cast<const std::uint8_t**>(from), static_cast<int>(frames));
    if (made < 0) return false;
    output.setFrameLength(output.frameLength() + static_cast<std::uint32_t>(made));
    return true;
  }

  const SwrContextPtr resampler_;
  const PcmShape from_;
};

}  // namespace

std::shared_ptr<AVAudioConverter> makeAudioConverter(const AVAudioFormat& from,
                                                     const AVAudioFormat& to) {
  const auto shape = shapeOf(from);
  auto resampler = makeResampler(shape, shapeOf(to));
  return resampler ? std::make_shared<Converter>(std::move(resampler), shape) : nullptr;
}

}  // namespace vlm::platform::media
