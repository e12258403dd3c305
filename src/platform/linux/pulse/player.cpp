#include "platform/linux/pulse/player.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/pulse/connection.h"

namespace vlm::platform::pulse {
namespace {

// What the server keeps ahead: a change of place or volume is heard this much later.
constexpr pa_usec_t kAhead = 40 * PA_USEC_PER_MSEC;

// One run of a sound through a stream, from a place in it to its end or to the end of its
// repetitions. Members are used under the lock of the connection, which is the run's own.
class Run {
 public:
  Run(const Sound& sound, std::unique_ptr<Connection> connection)
      : sound_(sound), connection_(std::move(connection)) {}
  ~Run() {
    const Connection::Lock lock(*connection_);
    stream_ = nullptr;
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  bool start(std::size_t frame, std::int64_t loops, float volume);
  // False when the end has been heard, or the server is gone.
  bool isPlaying() const;
  // The frame that is heard now; nothing when the end has been heard.
  std::size_t position() const;
  // False when all has been written, so that nothing will be asked for any more.
  bool moveTo(std::size_t frame);
  void setLoops(std::int64_t loops);
  void setVolume(float volume);

 private:
  static void onWritable(pa_stream* stream, std::size_t bytes, void* self);
  static void onDrained(pa_stream* stream, int success, void* self);
  void write(pa_stream* stream, std::size_t frames);
  bool rewindForLoop();

  const Sound& sound_;
  const std::unique_ptr<Connection> connection_;
  float volume_ = 1;
  std::int64_t loops_ = 0;
  std::size_t next_ = 0;  // the frame to be written next
  // A place in the sound, and how many frames had been written before it.
  std::size_t place_ = 0;
  std::size_t writtenBefore_ = 0;
  std::size_t written_ = 0;
  bool allWritten_ = false;
  bool allHeard_ = false;
  Stream stream_;
};

bool Run::start(std::size_t frame, std::int64_t loops, float volume) {
  const Connection::Lock lock(*connection_);
  next_ = place_ = frame;
  loops_ = loops;
  volume_ = volume;
  const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, sound_.sampleRate,
                              static_cast<std::uint8_t>(sound_.channels)};
  if (pa_sample_spec_valid(&format) == 0) return false;
  pa_channel_map channels;
  pa_channel_map_init_extend(&channels, sound_.channels, PA_CHANNEL_MAP_WAVEEX);
  pa_buffer_attr sizes{};
  sizes.maxlength = sizes.prebuf = sizes.minreq = static_cast<std::uint32_t>(-1);
  sizes.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(kAhead, &format));
  constexpr auto kFlags = static_cast<pa_stream_flags_t>(
      PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_INTERPOLATE_TIMING);
  stream_ = connection_->makeStream("sound", format, &channels, [&](pa_stream* stream) {
    pa_stream_set_write_callback(stream, onWritable, this);
    return pa_stream_connect_playback(stream, nullptr, &sizes, kFlags, nullptr, nullptr);
  });
  return stream_ != nullptr;
}

bool Run::isPlaying() const {
  const Connection::Lock lock(*connection_);
  return !allHeard_ && pa_stream_get_state(stream_.get()) == PA_STREAM_READY;
}

std::size_t Run::position() const {
  const Connection::Lock lock(*connection_);
  if (allHeard_) return 0;
  pa_usec_t time = 0;
  // Before the first word from the server nothing has been heard.
  if (pa_stream_get_time(stream_.get(), &time) < 0) time = 0;
  const auto heard = static_cast<std::size_t>(
      std::llround(static_cast<double>(time) * sound_.sampleRate / PA_USEC_PER_SEC));
  const auto since = std::min(heard, written_) - std::min({heard, written_, writtenBefore_});
  const auto frame = place_ + since;
  return frame < sound_.frames() ? frame : frame % sound_.frames();
}

bool Run::moveTo(std::size_t frame) {
  const Connection::Lock lock(*connection_);
  if (allWritten_) return false;
  next_ = place_ = frame;
  writtenBefore_ = written_;
  return true;
}

void Run::setLoops(std::int64_t loops) {
  const Connection::Lock lock(*connection_);
  loops_ = loops;
}

void Run::setVolume(float volume) {
  const Connection::Lock lock(*connection_);
  volume_ = volume;
}

void Run::onWritable(pa_stream* stream, std::size_t bytes, void* self) {
  static_cast<Run*>(self)->write(stream, bytes / pa_frame_size(pa_stream_get_sample_spec(stream)));
}

void Run::onDrained(pa_stream*, int success, void* self) {
  if (success != 0) static_cast<Run*>(self)->allHeard_ = true;
}

void Run::write(pa_stream* stream, std::size_t frames) {
  const std::size_t frameBytes = sound_.channels * sizeof(float);
  while (frames > 0 && !allWritten_) {
    if (next_ >= sound_.frames() && !rewindForLoop()) {
      allWritten_ = true;
      if (auto* operation = pa_stream_drain(stream, onDrained, this)) {
        pa_operation_unref(operation);
      }
      return;
    }
    void* memory = nullptr;
    std::size_t room = frames * frameBytes;
    if (pa_stream_begin_write(stream, &memory, &room) < 0) return;
    const auto count = std::min({frames, room / frameBytes, sound_.frames() - next_});
    if (count == 0) {
      pa_stream_cancel_write(stream);
      return;
    }
    const auto* from = sound_.samples.data() + next_ * sound_.channels;
    auto* to = static_cast<float*>(memory);
    for (std::size_t i = 0; i < count * sound_.channels; ++i) to[i] = from[i] * volume_;
    if (pa_stream_write(stream, memory, count * frameBytes, nullptr, 0, PA_SEEK_RELATIVE) < 0) {
      return;
    }
    next_ += count;
    written_ += count;
    frames -= count;
  }
}

// The next repetition follows without a gap; false when there is none.
bool Run::rewindForLoop() {
  if (loops_ == 0 || sound_.frames() == 0) return false;
  if (loops_ > 0) --loops_;
  next_ = 0;
  return true;
}

class Player final : public AVAudioPlayer {
 public:
  explicit Player(Sound sound) : sound_(std::move(sound)) {}

  // The sound is in memory already.
  bool prepareToPlay() override { return true; }

  bool play() override {
    if (isPlaying()) return true;
    stop();
    return startRun(loops_);
  }

  void stop() override {
    if (run_) frame_ = run_->position();
    run_ = nullptr;
  }

  void setVolume(float volume) override {
    volume_ = volume;
    if (run_) run_->setVolume(volume);
  }

  void setNumberOfLoops(std::int64_t loops) override {
    loops_ = loops;
    if (run_) run_->setLoops(loops);
  }

  double currentTime() override {
    return static_cast<double>(run_ ? run_->position() : frame_) / sound_.sampleRate;
  }

  void setCurrentTime(double seconds) override {
    const auto frame = std::llround(seconds * sound_.sampleRate);
    frame_ = static_cast<std::size_t>(
        std::clamp<long long>(frame, 0, static_cast<long long>(sound_.frames())));
    if (!run_ || run_->moveTo(frame_)) return;
    // Its end is on the way to being heard, the last repetition's: another run goes on from here.
    const bool goesOn = run_->isPlaying();
    run_ = nullptr;
    if (goesOn) startRun(0);
  }

  double duration() override { return static_cast<double>(sound_.frames()) / sound_.sampleRate; }

  bool isPlaying() override { return run_ && run_->isPlaying(); }

 private:
  bool startRun(std::int64_t loops) {
    auto connection = Connection::open();
    if (!connection) return false;
    auto run = std::make_unique<Run>(sound_, std::move(connection));
    if (!run->start(frame_, loops, volume_)) return false;
    run_ = std::move(run);
    return true;
  }

  const Sound sound_;
  float volume_ = 1;
  std::int64_t loops_ = 0;
  std::size_t frame_ = 0;  // where the next run begins
  std::unique_ptr<Run> run_;
};

}  // namespace

std::shared_ptr<AVAudioPlayer> makePlayer(Sound sound) {
  return std::make_shared<Player>(std::move(sound));
}

}  // namespace vlm::platform::pulse
