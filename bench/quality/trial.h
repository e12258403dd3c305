#pragma once

#include <string>
#include <vector>

#include "bench/quality/encoders.h"
#include "bench/quality/judge.h"

namespace vlm::bench {

using MakeEncoder = std::unique_ptr<QualityEncoder> (*)(const EncoderSettings&);

struct Trial {
  const ContentKind* content = nullptr;
  std::string encoder;
  MakeEncoder make = nullptr;
  EncoderSettings settings{};
  int frames = 0;
  int every = 1;  // of so many pictures one is submitted
  // Where pictures of what is shown are kept, after 1, 2 and 4 seconds; empty for none.
  std::string pictures{};
};

// What came of one picture of the content.
struct Moment {
  bool beginsStill = false;
  std::size_t bytes = 0;  // 0 when nothing was submitted
  double arrival = 0;     // seconds, when its last byte is through the line
  Quality quality;
};

struct Outcome {
  std::vector<Moment> moments;
  double processorSeconds = 0;
  int submitted = 0;
};

Outcome run(const Trial& trial);

struct Figures {
  double psnr = 0;  // means
  double ssim = 0;
  double seconds38 = 0;  // from a change; means over all changes, -1 when one is missing
  double seconds40 = 0;
  double averageRate = 0;  // bits a second
  double worstSecond = 0;  // bits of any window of one second
  double largestUnit = 0;  // bits
  double millisecondsEach = 0;
};

Figures figuresOf(const Outcome& outcome);

// Bits of a single picture of that quality.
double bitsNeeded(const Picture& picture, double psnr);

}  // namespace vlm::bench
