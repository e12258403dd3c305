#include "audio/playback_ring.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <numeric>
#include <random>
#include <vector>

#include "stage.h"

namespace {
thread_local int allocations = 0;
}

// Out of line: where the compiler sees through one of them only, it takes the two for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace vlm::test {
namespace {

using audio::PlaybackRing;
using platform::AudioBuffer;
using Samples = std::vector<float>;

constexpr float kUntouched = -1;

Samples ramp(std::size_t count, std::size_t from = 1) {
  Samples samples(count);
  std::iota(samples.begin(), samples.end(), static_cast<float>(from));
  return samples;
}

// One buffer a channel; those that are not to have memory have none.
struct Output {
  std::vector<Samples> channels;
  std::vector<AudioBuffer> list;
  Output(std::size_t buffers, std::uint32_t frames, unsigned withoutMemory = 0)
      : channels(buffers, Samples(frames, kUntouched)) {
    for (std::size_t i = 0; i < buffers; ++i) {
      void* memory = (withoutMemory >> i & 1) != 0 ? nullptr : channels[i].data();
      list.push_back({1, frames * 4, memory});
    }
  }
};

// What the ring is to do, sample by sample.
struct Model {
  std::size_t channels;
  Samples ring = Samples(channels * 24000);
  std::size_t readIdx = 0, writeIdx = 0;
  bool primed = false;

  void write(const Samples& samples) {
    for (const float sample : samples) {
      const std::size_t next = (writeIdx + 1) % ring.size();
      if (next == readIdx) return;
      ring[writeIdx] = sample;
      writeIdx = next;
    }
  }
  void render(std::uint32_t frames, Output& out) {
    const std::size_t available = (writeIdx + ring.size() - readIdx) % ring.size() / channels;
    std::size_t n = 0;
    primed = primed || available >= 2880;
    if (primed) n = std::min<std::size_t>(available, frames);
    for (std::size_t f = 0; f < n; ++f) {
      for (std::size_t c = 0; c < channels; ++c) {
        const float sample = ring[readIdx];
        readIdx = (readIdx + 1) % ring.size();
        if (c < out.list.size() && out.list[c].mData != nullptr) out.channels[c][f] = sample;
      }
    }
    if (available < frames) primed = false;
    for (std::size_t c = 0; c < std::min(channels, out.list.size()); ++c) {
      if (out.list[c].mData == nullptr) continue;
      std::fill(out.channels[c].begin() + static_cast<std::ptrdiff_t>(n), out.channels[c].end(), 0);
    }
  }
};

TEST(PlaybackRing, DoesWhatTheRulesSaySampleBySample) {
  for (const std::size_t channels : {1U, 2U}) {
    PlaybackRing ring(channels);
    Model model{channels};
    std::mt19937 random(static_cast<unsigned>(channels));
    const auto below = [&](std::size_t end) { return random() % end; };
    std::size_t written = 1;
    const std::size_t half = channels * 12000;
    // First up to the last place exactly, and on from the first.
    for (const std::size_t count : {half, half, std::size_t{0}, std::size_t{6000}}) {
      const auto samples = ramp(count, written++);
      ring.write(samples);
      model.write(samples);
      Output out(2, 12000), expected(2, 12000);
      ring.render(12000, out.list);
      model.render(12000, expected);
      ASSERT_EQ(out.channels, expected.channels);
    }
    for (int round = 0; round < 4000; ++round) {
      // Odd counts split frames, large ones fill the ring.
      const std::size_t count = below(10) == 0 ? below(60000) : below(1500);
      const auto samples = ramp(count, written++ % 1000);
      ring.write(samples);
      model.write(samples);
      const auto frames = static_cast<std::uint32_t>(below(10) == 0 ? below(30000) : below(700));
      const auto buffers = below(4);
      const auto missing = static_cast<unsigned>(below(8) == 0 ? below(4) : 0);
      Output out(buffers, frames, missing);
      Output expected(buffers, frames, missing);
      ring.render(frames, out.list);
      model.render(frames, expected);
      ASSERT_EQ(out.channels, expected.channels) << channels << " channels, round " << round;
    }
  }
}

// The whole way from the engine's thread to the ring.
TEST(Playback, RendersWithoutAllocating) {
  Machine machine;
  void* playback = vlm_audio_out_start(nullptr, 2);
  ASSERT_NE(playback, nullptr);
  const auto engine = machine.audio.engines.back().lock();
  const auto samples = ramp(2 * 6000);
  Output out(2, 960);
  const auto render = engine->renderBlock();
  bool isSilence = false;
  for (int round = 0; round < 30; ++round) {
    if (round % 10 == 1) vlm_audio_out_write(playback, samples.data(), 12000);
    allocations = 0;
    EXPECT_EQ(render(isSilence, 960, out.list), platform::noErr);
    EXPECT_EQ(allocations, 0) << "round " << round;
  }
  EXPECT_FALSE(isSilence);
  EXPECT_TRUE(machine.takeLog().empty());
  vlm_audio_out_stop(playback);
  EXPECT_EQ(render(isSilence, 960, out.list), platform::noErr) << "nothing is there any more";
}

}  // namespace
}  // namespace vlm::test
