#include "bench/quality/trial.h"

#include <unistd.h>

#include <algorithm>
#include <map>

#include "bench/support/clock.h"

namespace vlm::bench {
namespace {

// A line of the rate that any second may take, through which access units go one after the other.
class Line {
 public:
  explicit Line(int bitsPerSecond) : bytesPerSecond_(bitsPerSecond * 1.25 / 8) {}
  double send(double now, std::size_t bytes) {
    free_ = std::max(free_, now) + static_cast<double>(bytes) / bytesPerSecond_;
    return free_;
  }

 private:
  double bytesPerSecond_;
  double free_ = 0;
};

bool isKept(int frame) {
  const auto kept = {kFps, 2 * kFps, 4 * kFps};
  return std::ranges::find(kept, frame) != kept.end();
}

// Seconds from each change until its picture is as good as that, in the mean.
double secondsTo(const std::vector<Moment>& moments, double psnr) {
  double sum = 0;
  int changes = 0;
  for (std::size_t at = 0; at < moments.size(); ++at) {
    if (!moments[at].beginsStill) continue;
    std::size_t good = at;
    while (good < moments.size() && (good == at || !moments[good].beginsStill) &&
           moments[good].quality.psnr < psnr) {
      ++good;
    }
    if (good == moments.size() || (good != at && moments[good].beginsStill)) return -1;
    sum += moments[good].arrival - static_cast<double>(at) / kFps;
    ++changes;
  }
  return changes > 0 ? sum / changes : -1;
}

double worstWindow(const std::vector<Moment>& moments) {
  double window = 0;
  double worst = 0;
  for (std::size_t at = 0; at < moments.size(); ++at) {
    window += static_cast<double>(moments[at].bytes) * 8;
    if (at >= kFps) window -= static_cast<double>(moments[at - kFps].bytes) * 8;
    worst = std::max(worst, window);
  }
  return worst;
}

}  // namespace

Outcome run(const Trial& trial) {
  const auto& settings = trial.settings;
  const auto content = trial.content->make();
  const auto encoder = trial.make(settings);
  Canvas canvas(settings.width, settings.height);
  Picture picture(settings.width, settings.height);
  Judge judge(settings.width, settings.height);
  Line line(settings.bitsPerSecond);
  Outcome outcome;
  std::vector<std::size_t> judged;  // the moments that were compared
  for (int frame = 0; frame < trial.frames; ++frame) {
    const bool isDue = frame % trial.every == 0;
    const bool fresh = isDue && content->draw(frame, canvas);
    if (fresh) {
      convert(canvas, picture);
      encoder->take(picture);
    }
    Moment moment;
    moment.beginsStill = content->standsStill() && content->beginsStill(frame);
    if (fresh || (isDue && encoder->wantsRepeats())) {
      const auto begin = processorTime(getpid());
      const auto unit = encoder->encode(!fresh, frame * kSecond / kFps);
      outcome.processorSeconds += static_cast<double>(processorTime(getpid()) - begin) / kSecond;
      ++outcome.submitted;
      judge.show(unit);
      judge.compare(picture);
      judged.push_back(outcome.moments.size());
      moment.bytes = unit.size();
    }
    moment.arrival = line.send(static_cast<double>(frame) / kFps, moment.bytes);
    outcome.moments.push_back(moment);
    if (!trial.pictures.empty() && isKept(frame)) {
      judge.save(trial.pictures + "/" + trial.content->name + "-" + trial.encoder + "-" +
                 std::to_string(frame / kFps) + "s.yuv");
    }
  }
  const auto results = judge.finish();
  for (std::size_t i = 0; i < judged.size(); ++i) {
    // What is not submitted again keeps its quality.
    const auto end = i + 1 < judged.size() ? judged[i + 1] : outcome.moments.size();
    for (auto at = judged[i]; at < end; ++at) outcome.moments[at].quality = results.at(i);
  }
  return outcome;
}

Figures figuresOf(const Outcome& outcome) {
  const auto& moments = outcome.moments;
  const auto count = static_cast<double>(moments.size());
  Figures figures;
  for (const auto& moment : moments) {
    figures.psnr += moment.quality.psnr / count;
    figures.ssim += moment.quality.ssim / count;
    figures.averageRate += static_cast<double>(moment.bytes) * 8 * kFps / count;
    figures.largestUnit = std::max(figures.largestUnit, static_cast<double>(moment.bytes) * 8);
  }
  figures.seconds38 = secondsTo(moments, 38);
  figures.seconds40 = secondsTo(moments, 40);
  figures.worstSecond = worstWindow(moments);
  figures.millisecondsEach = outcome.processorSeconds * 1000 / outcome.submitted;
  return figures;
}

double bitsNeeded(const Picture& picture, double psnr) {
  for (int quantiser = 36; quantiser > 8; --quantiser) {
    const auto unit = encodeOnce(picture, quantiser);
    if (judgeOne(unit, picture).psnr >= psnr) return static_cast<double>(unit.size()) * 8;
  }
  return -1;
}

}  // namespace vlm::bench
