#include "support/tone.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace vlm::test {
namespace {

constexpr double kPieceSeconds = 0.01;
constexpr float kAudible = 0.01F;
using Phasor = std::complex<double>;

// The part of a piece that goes round at `radians` a sample. A window keeps other tones out.
Phasor phasor(std::span<const float> piece, double radians, std::size_t first) {
  Phasor sum = 0;
  double weights = 0;
  for (std::size_t i = 0; i < piece.size(); ++i) {
    const double turn =
        2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(piece.size());
    const double weight = 1 - std::cos(turn);
    weights += weight;
    sum += weight * static_cast<double>(piece[i]) *
           std::polar(1.0, -radians * static_cast<double>(first + i));
  }
  return 2.0 * sum / weights;
}

}  // namespace

Tone toneIn(std::span<const float> samples, std::size_t channels, std::size_t channel,
            double frequency, double rate) {
  std::vector<float> one;
  for (std::size_t i = channel; i < samples.size(); i += channels) one.push_back(samples[i]);
  const auto audible = [](float sample) { return std::abs(sample) > kAudible; };
  const auto begin = std::ranges::find_if(one, audible);
  const auto end = std::find_if(one.rbegin(), one.rend(), audible).base();
  const auto size = static_cast<std::size_t>(rate * kPieceSeconds);
  if (begin == one.end() || end - begin < static_cast<std::ptrdiff_t>(8 * size)) return {};
  const std::span<const float> heard(begin, end);

  const double radians = 2 * std::numbers::pi * frequency / rate;
  std::vector<Phasor> pieces;
  for (std::size_t at = 2 * size; at + 3 * size <= heard.size(); at += size) {
    pieces.push_back(phasor(heard.subspan(at, size), radians, at));
  }
  Tone tone;
  tone.amplitude = std::abs(pieces.front());
  double turned = 0;
  std::vector<double> steps;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    tone.amplitude = std::min(tone.amplitude, std::abs(pieces[i]));
    tone.loudest = std::max(tone.loudest, std::abs(pieces[i]));
    if (i > 0) steps.push_back(std::arg(pieces[i] / pieces[i - 1]));
    if (i > 0) turned += steps.back();
  }
  const double usual = turned / static_cast<double>(steps.size());
  for (const double step : steps) tone.jump = std::max(tone.jump, std::abs(step - usual));
  tone.seconds = static_cast<double>(heard.size()) / rate;
  tone.frequency = frequency + usual / (2 * std::numbers::pi) * rate / static_cast<double>(size);
  return tone;
}

std::vector<float> sine(double seconds, std::vector<double> frequencies, double amplitude,
                        double rate) {
  std::vector<float> samples;
  for (std::size_t i = 0; i < static_cast<std::size_t>(seconds * rate); ++i) {
    for (const double frequency : frequencies) {
      const double radians = 2 * std::numbers::pi * frequency / rate;
      samples.push_back(static_cast<float>(amplitude * std::sin(radians * static_cast<double>(i))));
    }
  }
  return samples;
}

}  // namespace vlm::test
