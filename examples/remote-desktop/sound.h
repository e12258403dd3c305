// Sound in packets of 20 ms: stereo, 48 kHz.
#pragma once

#include <opus.h>

#include "channel.h"
#include "library.h"

namespace remote {

inline constexpr int kSampleRate = 48000;
inline constexpr int kChannels = 2;
inline constexpr int kPacketFrames = kSampleRate / 50;

class SoundSender {
 public:
  SoundSender(const Mailbox& mailbox, Channel& channel)
      : mailbox_(mailbox),
        channel_(channel),
        encoder_(opus_encoder_create(kSampleRate, kChannels, OPUS_APPLICATION_AUDIO, nullptr)) {
    opus_encoder_ctl(encoder_.get(), OPUS_SET_BITRATE(96'000));
  }

  // On the capture's queue. Silence is not sent, but for the first packet, in which a sound fades.
  void encode(const float* samples, int frames, int channels) {
    if (frames != kPacketFrames || channels != kChannels) return;
    const bool isSilent =
        std::all_of(samples, samples + frames * channels, [](float sample) { return sample == 0; });
    if (isSilent && std::exchange(wasSilent_, true)) return;
    wasSilent_ = isSilent;
    Bytes packet(1500);
    const auto size = opus_encode_float(encoder_.get(), samples, frames, packet.data(),
                                        static_cast<opus_int32>(packet.size()));
    if (size <= 0) return;
    packet.resize(static_cast<std::size_t>(size));
    mailbox_.post([&channel = channel_, packet = std::move(packet)] {
      // What the line can't take in time is better left out.
      if (channel.queued() < kMostQueued) channel.send(Sound{packet});
    });
  }

 private:
  static constexpr std::size_t kMostQueued = 256 * 1024;

  const Mailbox& mailbox_;
  Channel& channel_;
  bool wasSilent_ = true;
  Owner<OpusEncoder, opus_encoder_destroy> encoder_;
};

// Keeps what waits to be played short: what a stalled line brings late, and what the other side's
// faster clock adds, is left out.
class SoundPlayer {
 public:
  SoundPlayer()
      : decoder_(opus_decoder_create(kSampleRate, kChannels, nullptr)),
        playback_(vlm_audio_out_start(nullptr, kChannels)) {}

  void play(const Bytes& packet) {
    std::array<float, kPacketFrames * kChannels> samples;
    const auto frames =
        opus_decode_float(decoder_.get(), packet.data(), static_cast<opus_int32>(packet.size()),
                          samples.data(), kPacketFrames, 0);
    if (frames <= 0) throw Malformed("no opus packet");
    const auto now = Clock::now();
    if (playedUntil_ < now) playedUntil_ = now;
    if (playedUntil_ - now > kMostWaiting) return;
    playedUntil_ += std::chrono::microseconds(frames * 1'000'000LL / kSampleRate);
    vlm_audio_out_write(playback_.get(), samples.data(), frames * kChannels);
  }

 private:
  static constexpr auto kMostWaiting = std::chrono::milliseconds(200);

  Owner<OpusDecoder, opus_decoder_destroy> decoder_;
  PlaybackHandle playback_;
  Clock::time_point playedUntil_{};
};

}  // namespace remote
