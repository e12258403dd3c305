#include "platform/portable/mix_input.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace vlm::test {
namespace {

using platform::MixInput;

// One input, written in frames that are numbered from 1 on, left and right alike.
struct Numbered {
  MixInput input;
  float written = 0;
  void write(int frames) {
    std::vector<float> samples;
    for (int i = 0; i < frames; ++i) {
      ++written;
      samples.insert(samples.end(), {written, written});
    }
    input.push(samples);
  }
  // The next 10 ms.
  std::array<float, 960> read() {
    std::array<float, 960> block{};
    input.addTo(block);
    return block;
  }
};

TEST(MixInput, GivesEveryFrameOnceInOrderAfterItsCushion) {
  Numbered numbered;
  numbered.write(1919);
  EXPECT_EQ(numbered.read(), (std::array<float, 960>{}));
  numbered.write(1);
  float expected = 0;
  for (int block = 0; block < 300; ++block) {
    const auto samples = numbered.read();
    for (std::size_t i = 0; i < samples.size(); i += 2) {
      ++expected;
      ASSERT_EQ(samples[i], expected);
      ASSERT_EQ(samples[i + 1], expected);
    }
    // Pieces of another length that come at the same pace.
    if (block % 4 == 3) numbered.write(1920);
  }
}

TEST(MixInput, WaitsForALargerCushionWhenItRanDryForAMoment) {
  Numbered numbered;
  numbered.write(1920);
  for (int i = 0; i < 5; ++i) numbered.read();
  numbered.write(2399);
  EXPECT_EQ(numbered.read()[0], 0) << "10 ms more than before";
  numbered.write(1);
  EXPECT_EQ(numbered.read()[0], 1921);
  // A pause is no reason for a larger one.
  for (int i = 0; i < 20; ++i) numbered.read();
  numbered.write(1920);
  EXPECT_GT(numbered.read()[0], 0);
}

// Where frames are being left out, because a burst had come, there may be none to leave out.
TEST(MixInput, RunsDryToTheLastFrameWhileItCatchesUp) {
  for (int last = 300; last < 315; ++last) {  // one of them is all that is left
    Numbered numbered;
    for (int block = 0; block < 500; ++block) {
      numbered.write(block == 0 ? 1920 : block == 200 ? 6240 : 480);
      numbered.read();
    }
    numbered.write(last);
    for (int block = 0; block < 40; ++block) ASSERT_LE(numbered.read()[0], numbered.written);
    EXPECT_EQ(numbered.read(), (std::array<float, 960>{}));
  }
}

// Two clocks that differ by two parts in a thousand: without a correction the faster writer's sound
// would be 80 ms later in the end, and the slower one's run dry.
TEST(MixInput, FollowsClocksThatDriftApart) {
  for (const int faster : {1, -1}) {
    Numbered numbered;
    numbered.write(3000);
    float last = 0;
    for (int block = 0; block < 4000; ++block) {
      numbered.write(480 + faster);
      const auto samples = numbered.read();
      ASSERT_LE(std::abs(samples.front() - last - 1), 1) << "one frame at a time, block " << block;
      last = samples.back();
      ASSERT_LE(std::abs(last - samples.front() - 479), 1) << block;
      ASSERT_LT(numbered.written - last, 6000);
    }
  }
}

TEST(MixInput, KeepsHalfASecondOfWhatNobodyReads) {
  Numbered numbered;
  for (int i = 0; i < 100; ++i) numbered.write(4800);
  EXPECT_GE(numbered.read()[0], numbered.written - 24000);
}

}  // namespace
}  // namespace vlm::test
