#include "platform/linux/pulse/sound_mix.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "platform/mutex.h"

namespace vlm::platform::pulse {
namespace {

// What the server keeps ahead: a change of place or volume is heard this much later.
constexpr pa_usec_t kMixedAhead = 40 * PA_USEC_PER_MSEC;

}  // namespace

std::shared_ptr<SoundMix> SoundMix::of(const Sound& sound) {
  using Format = std::pair<std::uint32_t, std::uint32_t>;
  struct Mixes {
    Mutex mutex;
    std::map<Format, std::weak_ptr<SoundMix>> mixes VLM_GUARDED_BY(mutex);
  };
  static auto* const all = new Mixes();
  auto connection = Connection::shared();
  if (!connection) return nullptr;
  const MutexLock lock(all->mutex);
  std::erase_if(all->mixes, [](const auto& entry) { return entry.second.expired(); });
  auto& entry = all->mixes[{sound.sampleRate, sound.channels}];
  auto mix = entry.lock();
  if (!mix) entry = mix = std::make_shared<SoundMix>(std::move(connection));
  return mix;
}

SoundMix::~SoundMix() {
  const Connection::Lock lock(*connection_);
  stream_ = nullptr;
}

bool SoundMix::play(Voice& voice, std::size_t frame) {
  const Connection::Lock lock(*connection_);
  if (!isAlive(stream_)) begin(voice.sound());
  if (!stream_) return false;
  voice.moveTo(frame, written_);
  voices_.push_back(&voice);
  goOn();
  // A short sound may have been heard when this thread goes on.
  return connection_->isAccepted(stream_) || !has(voice);
}

void SoundMix::begin(const Sound& sound) {
  voices_.clear();
  written_ = 0;
  isDraining_ = false;
  const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, sound.sampleRate,
                              static_cast<std::uint8_t>(sound.channels)};
  stream_ = nullptr;
  if (pa_sample_spec_valid(&format) == 0) return;
  pa_channel_map channels;
  pa_channel_map_init_extend(&channels, sound.channels, PA_CHANNEL_MAP_WAVEEX);
  pa_buffer_attr sizes{};
  sizes.maxlength = sizes.prebuf = sizes.minreq = static_cast<std::uint32_t>(-1);
  sizes.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(kMixedAhead, &format));
  constexpr auto kFlags = static_cast<pa_stream_flags_t>(
      PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_INTERPOLATE_TIMING);
  stream_ = connection_->beginStream("sound", format, &channels, [&](pa_stream* stream) {
    pa_stream_set_write_callback(stream, onWritable, this);
    return pa_stream_connect_playback(stream, nullptr, &sizes, kFlags, nullptr, nullptr);
  });
}

void SoundMix::stop(Voice& voice) {
  const Connection::Lock lock(*connection_);
  std::erase(voices_, &voice);
  forgetHeard(heard());
  // What the server has been given of it is not heard any more, unless others are in it too.
  if (voices_.empty()) {
    stream_ = nullptr;
  } else {
    goOn();
  }
}

bool SoundMix::isPlaying(const Voice& voice) const {
  const Connection::Lock lock(*connection_);
  return has(voice) && isAlive(stream_) &&
         (isDraining_ || !voice.isMixed() || heard() < voice.end());
}

std::size_t SoundMix::position(const Voice& voice) const {
  const Connection::Lock lock(*connection_);
  return has(voice) ? voice.frameAt(heard()) : 0;
}

bool SoundMix::moveTo(Voice& voice, std::size_t frame) {
  const Connection::Lock lock(*connection_);
  if (!has(voice) || !isAlive(stream_)) return false;
  voice.moveTo(frame, written_);
  goOn();
  return true;
}

void SoundMix::setVolume(Voice& voice, float volume) {
  const Connection::Lock lock(*connection_);
  voice.setVolume(volume);
}

void SoundMix::setLoops(Voice& voice, std::int64_t loops) {
  const Connection::Lock lock(*connection_);
  voice.setLoops(loops);
}

void SoundMix::onWritable(pa_stream*, std::size_t bytes, void* self) {
  static_cast<SoundMix*>(self)->write(bytes);
}

// Writes what the server has room for: when it ran out of samples it does not ask for more.
void SoundMix::goOn() {
  if (pa_stream_get_state(stream_.get()) != PA_STREAM_READY) return;
  const auto bytes = pa_stream_writable_size(stream_.get());
  if (bytes != static_cast<std::size_t>(-1)) write(bytes);
}

void SoundMix::write(std::size_t bytes) {
  forgetHeard(heard());
  while (bytes > 0) {
    const auto written = writePiece(bytes);
    if (written == 0) break;
    bytes -= written;
  }
  if (std::ranges::all_of(voices_, &Voice::isMixed)) drain();
}

// 0 when there is nothing to write, or it can't be written.
std::size_t SoundMix::writePiece(std::size_t bytes) {
  void* memory = nullptr;
  if (pa_stream_begin_write(stream_.get(), &memory, &bytes) < 0) return 0;
  const auto frameBytes = pa_frame_size(pa_stream_get_sample_spec(stream_.get()));
  const auto frames = mixInto({static_cast<float*>(memory), bytes / sizeof(float)});
  if (frames == 0) {
    pa_stream_cancel_write(stream_.get());
    return 0;
  }
  const auto length = frames * frameBytes;
  if (pa_stream_write(stream_.get(), memory, length, nullptr, 0, PA_SEEK_RELATIVE) < 0) return 0;
  written_ += frames;
  return length;
}

// How many frames there are of the voice that has most.
std::size_t SoundMix::mixInto(std::span<float> piece) {
  std::ranges::fill(piece, 0.0F);
  std::size_t frames = 0;
  for (Voice* voice : voices_) frames = std::max(frames, voice->addTo(piece, written_));
  return frames;
}

void SoundMix::drain() {
  if (std::exchange(isDraining_, true)) return;
  drainedUpTo_ = written_;
  if (auto* operation = pa_stream_drain(stream_.get(), onDrained, this)) {
    pa_operation_unref(operation);
  }
}

void SoundMix::onDrained(pa_stream*, int success, void* self) {
  if (success == 0) return;
  auto& mix = *static_cast<SoundMix*>(self);
  mix.isDraining_ = false;
  mix.forgetHeard(mix.drainedUpTo_);
  if (mix.voices_.empty()) {
    mix.stream_ = nullptr;
  } else {
    mix.goOn();  // with what began meanwhile
  }
  mix.connection_->wake();
}

bool SoundMix::has(const Voice& voice) const {
  return std::ranges::find(voices_, &voice) != voices_.end();
}

// Frames that have been heard.
std::uint64_t SoundMix::heard() const {
  pa_usec_t time = 0;
  // Before the first word from the server nothing has been heard.
  if (!stream_ || pa_stream_get_time(stream_.get(), &time) < 0) return 0;
  const auto rate = pa_stream_get_sample_spec(stream_.get())->rate;
  return static_cast<std::uint64_t>(
      std::llround(static_cast<double>(time) * rate / PA_USEC_PER_SEC));
}

void SoundMix::forgetHeard(std::uint64_t heard) {
  std::erase_if(voices_,
                [&](const Voice* voice) { return voice->isMixed() && voice->end() <= heard; });
}

}  // namespace vlm::platform::pulse
