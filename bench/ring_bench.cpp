#include <jack/ringbuffer.h>

#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "audio/playback_ring.h"
#include "turns.h"

namespace vlm::bench {
namespace {

constexpr std::size_t kFrames = 480;  // 10 ms
constexpr std::size_t kSamples = 2 * kFrames;
constexpr std::size_t kBytes = kSamples * sizeof(float);
constexpr int kRounds = 1000;

struct RingEnd {
  void operator()(jack_ringbuffer_t* ring) const { jack_ringbuffer_free(ring); }
};

// One write and one render of the same frames, over and over, on one thread. Ours takes its lock
// for each and gives every channel its own buffer; JACK's takes none, for it has one writer
// and one reader only, and hands out the bytes as they came.
void writeAndRender(benchmark::State& state) {
  const std::vector<float> samples(kSamples, 0.25F);
  std::array<std::vector<float>, 2> planes{std::vector<float>(kFrames),
                                           std::vector<float>(kFrames)};
  const platform::AudioBuffer list[] = {{1, kBytes / 2, planes[0].data()},
                                        {1, kBytes / 2, planes[1].data()}};
  audio::PlaybackRing ours(2);
  ours.write(std::vector<float>(2 * audio::PlaybackRing::kPrimeFrames));

  const std::unique_ptr<jack_ringbuffer_t, RingEnd> theirs(
      jack_ringbuffer_create(2 * audio::PlaybackRing::kFrames * sizeof(float)));
  std::vector<char> out(kBytes);
  std::vector<char> between(audio::PlaybackRing::kFrames * 2 * sizeof(float));

  Turns turns(state);
  turns.add("ours", [&](auto) {
    for (int i = 0; i < kRounds; ++i) {
      ours.write(samples);
      ours.render(kFrames, list);
      benchmark::ClobberMemory();
    }
  });
  turns.add("jack", [&](auto) {
    for (int i = 0; i < kRounds; ++i) {
      jack_ringbuffer_write(theirs.get(), reinterpret_cast<const char*>(samples.data()), kBytes);
      jack_ringbuffer_read(theirs.get(), out.data(), kBytes);
      benchmark::ClobberMemory();
    }
  });
  // Through memory as large as the ring, as the others do.
  turns.add("memcpy", [&](auto) {
    std::size_t at = 0;
    for (int i = 0; i < kRounds; ++i) {
      std::memcpy(between.data() + at, samples.data(), kBytes);
      std::memcpy(out.data(), between.data() + at, kBytes);
      at = (at + kBytes) % between.size();
      benchmark::ClobberMemory();
    }
  });
  turns.run(static_cast<double>(kRounds * kBytes));
}
BENCHMARK(writeAndRender)->UseManualTime();

}  // namespace
}  // namespace vlm::bench
