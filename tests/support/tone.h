#pragma once

#include <span>
#include <vector>

namespace vlm::test {

struct Tone {
  double amplitude = 0;  // of the weakest piece of 10 ms
  double loudest = 0;    // of the strongest
  double frequency = 0;  // measured over the whole
  // The largest change of phase from one piece to the next beyond what the frequency gives, in
  // radians: a gap, a repetition or a click shows here.
  double jump = 0;
  double seconds = 0;
};

// What one channel of interleaved samples holds of a tone whose frequency is about known, from
// where it begins to where it ends, less an edge at both sides.
Tone toneIn(std::span<const float> samples, std::size_t channels, std::size_t channel,
            double frequency, double rate = 48000);

// One second or more of a sine, the same in every channel but for the frequency, which is given for
// each.
std::vector<float> sine(double seconds, std::vector<double> frequencies, double amplitude,
                        double rate = 48000);

}  // namespace vlm::test
