#include "bench/quality/wander.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <fstream>
#include <memory>
#include <utility>

#include "bench/quality/contents.h"
#include "bench/quality/encoders.h"
#include "bench/quality/judge.h"
#include "bench/quality/random.h"

namespace vlm::bench {
namespace {

constexpr double kSlowest = 0.3e6;
constexpr double kFastest = 20e6;
constexpr int kSharpAfter = 10 * kFps;
constexpr double kSharp = 40;  // dB
constexpr double kLimit = 1.25;

// What any second took, beside the highest rate that counted in it.
class Windows {
 public:
  // Whether the second that ends with this picture is the first of several beyond the limit.
  bool add(double bits, double rate) {
    sent_.push_back({bits, rate});
    if (sent_.size() > kFps) sent_.pop_front();
    double sum = 0;
    double highest = 0;
    for (const auto& each : sent_) {
      sum += each.bits;
      highest = std::max(highest, each.rate);
    }
    worst_ = std::max(worst_, sum / highest);
    // What is alone more than that could be coded no coarser.
    const bool isAlone =
        std::ranges::any_of(sent_, [](const Sent& each) { return each.bits > kLimit * each.rate; });
    const bool isBeyond = sum > kLimit * highest && !isAlone;
    if (isBeyond) ++beyond_;
    return isBeyond > std::exchange(wasBeyond_, isBeyond);
  }
  double worst() const { return worst_; }
  int beyond() const { return beyond_; }

 private:
  struct Sent {
    double bits;
    double rate;
  };
  std::deque<Sent> sent_;
  double worst_ = 0;
  int beyond_ = 0;
  bool wasBeyond_ = false;
};

// Contents one after the other, each moving for a while and then standing still.
class Show {
 public:
  Show(const WanderSettings& settings, Random& random)
      : random_(random), canvas_(settings.width, settings.height) {}

  // Whether the picture is another one than before.
  bool draw(Picture& picture) {
    if (left_-- == 0) begin();
    ++still_;
    if (frame_ >= moving_ || !content_->draw(frame_++, canvas_)) return false;
    convert(canvas_, picture);
    still_ = 0;
    return true;
  }
  // For so many pictures it has been the same.
  int still() const { return still_; }
  const std::string& name() const { return name_; }

 private:
  void begin() {
    const auto& kinds = contentKinds();
    // All but noise, which is last: its pictures cost more than any limit however coarse they are.
    const auto& kind = kinds[random_.next() % (kinds.size() - 1)];
    content_ = kind.make();
    name_ = kind.name;
    frame_ = 0;
    moving_ = kFps * (1 + static_cast<int>(random_.next() % 8));
    left_ = moving_ + kFps * (3 + static_cast<int>(random_.next() % 12));
  }

  Random& random_;
  Canvas canvas_;
  std::unique_ptr<Content> content_;
  std::string name_;
  int frame_ = 0;
  int moving_ = 0;
  int left_ = 0;
  int still_ = 0;
};

double randomRate(Random& random) {
  const double at = static_cast<double>(random.next() % 1000) / 999;
  return kSlowest * std::pow(kFastest / kSlowest, at);
}

}  // namespace

bool wander(const WanderSettings& settings) {
  Random random(settings.seed);
  Show show(settings, random);
  double rate = randomRate(random);
  const auto encoder = makeOurs({.width = settings.width,
                                 .height = settings.height,
                                 .fps = kFps,
                                 .bitsPerSecond = static_cast<int>(rate),
                                 .lowLatency = settings.lowLatency});
  std::ofstream stream(settings.stream, std::ios::binary);
  Picture picture(settings.width, settings.height);
  Judge judge(settings.width, settings.height);
  Windows windows;
  int changes = 0;
  int rateLeft = 0;
  std::vector<std::string> judged;
  for (int frame = 0; frame < settings.minutes * 60 * kFps; ++frame) {
    if (rateLeft-- == 0) {
      encoder->setBitRate(static_cast<int>(rate = randomRate(random)));
      rateLeft = kFps * (2 + static_cast<int>(random.next() % 5));
      ++changes;
    }
    const bool fresh = show.draw(picture);
    if (fresh) encoder->take(picture);
    Bytes unit;
    if (fresh || encoder->wantsRepeats()) {
      unit = encoder->encode(!fresh, frame * kSecond / kFps);
      judge.show(unit);
      stream.write(reinterpret_cast<const char*>(unit.data()),
                   static_cast<std::streamsize>(unit.size()));
    }
    if (windows.add(static_cast<double>(unit.size()) * 8, rate)) {
      std::printf("beyond the limit at %.1f s: %s, %.0f kbit/s, a unit of %zu bytes\n",
                  static_cast<double>(frame) / kFps, show.name().c_str(), rate / 1000, unit.size());
    }
    if (show.still() == kSharpAfter) {
      judge.compare(picture);
      judged.push_back(show.name());
    }
  }
  const auto results = judge.finish();
  int unsharp = 0;
  double least = 99;
  for (std::size_t at = 0; at < results.size(); ++at) {
    least = std::min(least, results[at].psnr);
    if (results[at].psnr >= kSharp) continue;
    ++unsharp;
    std::printf("%s: %.1f dB\n", judged[at].c_str(), results[at].psnr);
  }
  std::printf(
      "%d minutes, %d rates: worst second %.2f of the rate, %d beyond the limit; %zu pictures "
      "stood "
      "still for ten seconds, the worst at %.1f dB, %d not sharp\n",
      settings.minutes, changes, windows.worst(), windows.beyond(), results.size(), least, unsharp);
  return windows.beyond() == 0 && unsharp == 0 && !results.empty();
}

}  // namespace vlm::bench
