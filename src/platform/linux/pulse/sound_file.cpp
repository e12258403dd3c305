#include "platform/linux/pulse/sound_file.h"

#include <string>

#include "platform/linux/media/libav.h"
#include "platform/linux/media/quiet_libav.h"
#include "platform/linux/media/sound_container.h"

namespace vlm::platform::pulse {
namespace {

constexpr std::size_t kMostSamples = (std::size_t{1} << 30) / sizeof(float);
constexpr int kMostChannels = 32;  // of a stream to the server

class Reader {
 public:
  bool open(const std::string& path) {
    if (!file_.open(path)) return false;
    codec_ = file_.makeDecoder();
    return codec_ != nullptr;
  }

  // What can be decoded before the end of the file, or before too much is damaged or changes.
  std::optional<Sound> read() {
    while (sound_.samples.size() <= kMostSamples && readPacket()) {
    }
    if (sound_.samples.empty() || sound_.samples.size() > kMostSamples) return std::nullopt;
    return std::move(sound_);
  }

 private:
  bool readPacket() {
    const bool isEnd = !file_.read(*packet_);
    bool goesOn = !isEnd;
    // A packet that can't be decoded is left out.
    avcodec_send_packet(codec_.get(), isEnd ? nullptr : packet_.get());
    while (avcodec_receive_frame(codec_.get(), decoded_.get()) >= 0) goesOn = take() && goesOn;
    av_packet_unref(packet_.get());
    return goesOn;
  }

  // Adds the decoded frame to the sound; false for one that does not fit to those before.
  bool take() {
    if (sound_.channels == 0 && !begin()) return false;
    if (static_cast<std::uint32_t>(decoded_->sample_rate) != sound_.sampleRate || !convert()) {
      return false;
    }
    const auto* samples = reinterpret_cast<const float*>(converted_->data[0]);
    const auto count = static_cast<std::size_t>(converted_->nb_samples) * sound_.channels;
    sound_.samples.insert(sound_.samples.end(), samples, samples + count);
    return true;
  }

  bool begin() {
    const int channels = decoded_->ch_layout.nb_channels;
    if (decoded_->sample_rate <= 0 || channels <= 0 || channels > kMostChannels) return false;
    sound_.sampleRate = static_cast<std::uint32_t>(decoded_->sample_rate);
    sound_.channels = static_cast<std::uint32_t>(channels);
    return true;
  }

  // To interleaved floats. Refuses a frame whose channels are others than before.
  bool convert() {
    if (decoded_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
      av_channel_layout_default(&decoded_->ch_layout, decoded_->ch_layout.nb_channels);
    }
    av_frame_unref(converted_.get());
    converted_->format = AV_SAMPLE_FMT_FLT;
    converted_->sample_rate = decoded_->sample_rate;
    return av_channel_layout_copy(&converted_->ch_layout, &decoded_->ch_layout) >= 0 &&
           swr_convert_frame(converter_.get(), converted_.get(), decoded_.get()) >= 0;
  }

  const media::QuietLibav quiet_;
  media::SoundContainer file_;
  media::AVCodecContextPtr codec_;
  const media::SwrContextPtr converter_{swr_alloc()};
  const media::AVPacketPtr packet_{av_packet_alloc()};
  const media::AVFramePtr decoded_{av_frame_alloc()};
  const media::AVFramePtr converted_{av_frame_alloc()};
  Sound sound_;
};

}  // namespace

std::optional<Sound> readSound(std::string_view path) {
  Reader reader;
  return reader.open(std::string(path)) ? reader.read() : std::nullopt;
}

}  // namespace vlm::platform::pulse
