#include "platform/linux/h264/quantiser_control.h"

#include <algorithm>

namespace vlm::platform::h264 {
namespace {

// While most of the picture moves, and often, a finer one is not seen, and takes time to write.
constexpr int kFinestMoving = 22;
constexpr double kSlow = 0.15;  // seconds between pictures, from which on that time does not matter
// For what moves on a screen that rests otherwise: what is sharp need not be sent again elsewhere.
constexpr int kFinestCalm = 9;
// What stays is refined to each of these in turn. All of it is readable after the first.
constexpr std::array kStages{28, 21, 14, 9, 4};
// The energy of an error that may be seen, in any quarter of a block.
constexpr float kVisible = 0.05F;

// What moves leaves so much to what stays while that is coarse.
constexpr double kMovingShare = 0.85;
constexpr double kUnsureShare = 0.4;

// A finer quantiser makes the encoder look at every block again. That has to be worth it while much
// of the picture moves.
constexpr int kWorthwhileStep = 3;
// What moves goes finer in steps, since what it costs there is hardly known.
constexpr int kWidestStep = 4;
constexpr int kGrain = 28;            // and finer
constexpr double kBeforeGrain = 0.5;  // of what a picture may take
// In pictures: what rests between two changes saves for the next; what moved so lately may go on.
constexpr std::uint32_t kLongestRest = 4;
constexpr std::uint32_t kLately = 30;
constexpr double kStepPatience = 0.25;       // seconds, for smaller steps
constexpr double kBetweenRefinements = 0.4;  // seconds, while things move
constexpr double kCalm = 0.05;               // of all blocks
// More than so many times the usual change is something new on the screen.
constexpr double kSurprise = 4;
constexpr double kForgetting = 0.3;
// Of what the last one took, for the next.
constexpr double kReserve = 1.15;

bool isVisible(const BlockEnergy& energy) {
  return std::ranges::any_of(energy, [](float quarter) { return quarter > kVisible; });
}

}  // namespace

int QuantiserControl::quantiserFor(const Picture& picture, const CompressionSettings& settings) {
  picture_ = picture;
  ++pictures_;
  quantiserBefore_ = quantiser_;
  worst_ = settings.worstQuantiser;
  forecast_ = {};
  candidates_.clear();
  holds_ = false;
  budget_.advance(picture.seconds, settings);
  survey();
  best_ = std::min(isBusy() ? kFinestMoving : kFinestCalm, worst_);
  if (budget_.isUnlimited()) return quantiser_ = std::min(kFinestMoving, worst_);
  if (mustWait()) return hold();
  const int target = picture.keyFrame || picture.shown == nullptr ? worst_ : stage();
  quantiser_ = choose(target);
  return quantiser_;
}

// The quantiser, with the forecast of what it takes, and the blocks that are refined to it.
int QuantiserControl::choose(int target) {
  const bool refines = target < worst_;
  if (picture_.keyFrame || isSurprise()) {
    quantiser_ = forNewContent(budget_.atOnce());
    forecast_.fresh = costs_.fresh(detail_, quantiser_);
    return quantiser_;
  }
  const std::uint32_t every = std::min(pictures_ - lastMotion_, kLongestRest);
  const bool movedLately = lastMotion_ > 0 && pictures_ - lastMotion_ < kLately;
  double budget =
      changed_ > 0 ? budget_.ordinary(every) : budget_.forRefining(movedLately, surpriseBytes_);
  if (changed_ == 0) {
    quantiser_ = refines ? target : quantiserBefore_;
  } else {
    const bool shares =
        refines && every == 1 && coarsestStill() >= motionQuantiser_ + kWorthwhileStep;
    quantiser_ = forMotion(shares ? kMovingShare * budget : budget);
    if (refines && !mostMoves()) quantiser_ = std::max(quantiser_, target);
    if (quantiser_ < quantiserBefore_ && !isWorthwhile(quantiser_)) quantiser_ = quantiserBefore_;
    quantiser_ = std::min(quantiser_, worst_);
    if (refines && mayRefineMeanwhile()) {
      quantiser_ = std::min(kFinestCalm, worst_);
      budget = budget_.forRefining(true, surpriseBytes_);
    }
    forecast_.motion = costs_.motion(changed_, quantiser_);
  }
  // At another quantiser the forecast is less sure.
  const double share = quantiser_ < quantiserBefore_ ? kUnsureShare : 1;
  if (refines) refine(share * (budget - forecast_.motion));
  if (changed_ == 0 && candidates_.empty()) quantiser_ = std::min(quantiserBefore_, worst_);
  return quantiser_;
}

// Whether what changed does not fit, however coarse it is coded, until earlier pictures are
// through.
bool QuantiserControl::mustWait() const {
  if (picture_.keyFrame || picture_.shown == nullptr || changed_ == 0) return false;
  return budget_.isSpent(isSurprise() ? costs_.fresh(detail_, worst_)
                                      : costs_.motion(changed_, worst_));
}

// Shows again what decoders show already. What changed is owed to the pictures that follow.
int QuantiserControl::hold() {
  for (std::size_t block = 0; block < owed_.size(); ++block) {
    if (picture_.constant[block] == 0) owed_[block] = 1;
  }
  std::ranges::fill(picture_.constant, std::uint8_t{1});
  changed_ = 0;
  holds_ = true;
  return quantiser_ = std::min(quantiserBefore_, worst_);
}

bool QuantiserControl::holdsBack() const {
  return holds_ || (quantiser_ < quantiserBefore_ && changed_ + candidates_.size() < coded_.size());
}

void QuantiserControl::survey() {
  const auto blocks = picture_.constant.size();
  coded_.resize(blocks);
  owed_.resize(blocks);
  changedIn_.resize(blocks);
  still_.fill(0);
  changed_ = 0;
  for (std::size_t block = 0; block < blocks; ++block) {
    if (owed_[block] != 0) picture_.constant[block] = 0;
    if (picture_.constant[block] != 0) {
      ++still_[coded_[block]];
    } else {
      ++changed_;
      changedIn_[block] = pictures_;
    }
  }
  if (picture_.keyFrame) changed_ = blocks;
  const bool maySettle = !isCalm() && !mostMoves() && motionQuantiser_ > kFinestCalm;
  if (!picture_.keyFrame && !isSurprise() && !maySettle) return;
  detail_.clear();
  const auto columns = (picture_.source.width + 15) / 16;
  for (std::size_t block = 0; block < blocks; ++block) {
    if (picture_.constant[block] != 0 && !picture_.keyFrame) continue;
    detail_.add(detailEnergy(picture_.source, block % columns, block / columns));
  }
}

// What the coarsest of the blocks that stay is coded with.
int QuantiserControl::coarsestStill() const {
  int coarsest = static_cast<int>(still_.size()) - 1;
  while (coarsest > 0 && still_[static_cast<std::size_t>(coarsest)] == 0) --coarsest;
  return coarsest;
}

// The first stage that blocks are still to be refined to; the worst quantiser for none.
int QuantiserControl::stage() const {
  const int coarsest = coarsestStill();
  const auto* stage = std::ranges::find_if(kStages, [&](int each) { return each < coarsest; });
  return stage == kStages.end() ? worst_ : std::min(*stage, worst_);
}

bool QuantiserControl::isCalm() const {
  return static_cast<double>(changed_) < kCalm * static_cast<double>(picture_.constant.size());
}

bool QuantiserControl::mostMoves() const {
  return 2 * changed_ > picture_.constant.size();
}

// Whether the encoder has much to do in little time.
bool QuantiserControl::isBusy() const {
  return mostMoves() && budget_.interval() < kSlow;
}

bool QuantiserControl::isSurprise() const {
  return !isCalm() && static_cast<double>(changed_) > kSurprise * usualChange_;
}

bool QuantiserControl::isWorthwhile(int finer) const {
  return finer == best_ || quantiserBefore_ - finer >= kWorthwhileStep || mostMoves() || isCalm() ||
         picture_.seconds - lastFiner_ >= kStepPatience;
}

// Whether what moves is as fine as it gets and leaves enough to take a picture now and then in
// which all is finer.
bool QuantiserControl::mayRefineMeanwhile() const {
  return quantiser_ == best_ && !isCalm() && picture_.seconds - lastFiner_ >= kBetweenRefinements &&
         costs_.motion(changed_, kFinestCalm) < budget_.forRefining(true, surpriseBytes_) / 2;
}

int QuantiserControl::forNewContent(double budget) const {
  int quantiser = best_;
  while (quantiser < worst_ && costs_.fresh(detail_, quantiser) > budget) ++quantiser;
  return quantiser;
}

int QuantiserControl::forMotion(double budget) const {
  int quantiser = std::max(best_, motionQuantiser_ - widestStep(budget));
  while (quantiser < worst_ && costs_.motion(changed_, quantiser) > budget) ++quantiser;
  return quantiser;
}

// How much finer than last time what moves may be coded.
int QuantiserControl::widestStep(double budget) const {
  if (isCalm()) return motionQuantiser_;  // whatever it costs is little
  // As far as all of it could be coded anew.
  int sure = motionQuantiser_;
  if (!mostMoves()) {
    while (sure > best_ && costs_.fresh(detail_, sure - 1) < budget) --sure;
  }
  if (motionQuantiser_ - sure > 1) return motionQuantiser_ - sure;
  if (motionQuantiser_ > kGrain) return std::min(kWidestStep, motionQuantiser_ - kGrain);
  // One step more may bring the grain of a film to light, at several times the bytes.
  if (costs_.knowsMotionAt(motionQuantiser_ - 1) || !lowLatency_) return 1;
  return costs_.motion(changed_, motionQuantiser_) < kBeforeGrain * budget ? 1 : 0;
}

// Those that changed last come first, and of one change from top to bottom.
void QuantiserControl::orderCandidates(int above) {
  for (std::uint32_t block = 0; block < coded_.size(); ++block) {
    if (picture_.constant[block] != 0 && coded_[block] > above) candidates_.push_back(block);
  }
  std::ranges::stable_sort(candidates_, std::ranges::greater{},
                           [this](std::uint32_t block) { return changedIn_[block]; });
}

void QuantiserControl::refine(double budget) {
  if (budget <= 0) return;
  const bool isStage = std::ranges::find(kStages, quantiser_) != kStages.end();
  orderCandidates(changed_ == 0 || isStage ? quantiser_ : quantiser_ + kWorthwhileStep - 1);
  const auto columns = (picture_.source.width + 15) / 16;
  std::size_t chosen = 0;
  for (const auto block : candidates_) {
    const auto energy =
        differenceEnergy(picture_.source, *picture_.shown, block % columns, block / columns);
    if (!isVisible(energy)) {
      coded_[block] = 0;
      continue;
    }
    const double cost = costs_.refinement(energy, quantiser_);
    if (forecast_.refinement + cost > budget) break;
    forecast_.refinement += cost;
    candidates_[chosen++] = block;
    picture_.constant[block] = 0;
  }
  candidates_.resize(chosen);
}

void QuantiserControl::spend(std::size_t bytes) {
  budget_.spend(static_cast<double>(bytes));
  if (quantiser_ < quantiserBefore_) lastFiner_ = picture_.seconds;
  costs_.learn(forecast_, changed_, quantiser_, bytes);
  if (forecast_.fresh > 0) surpriseBytes_ = kReserve * static_cast<double>(bytes);
  for (std::size_t block = 0; block < coded_.size(); ++block) {
    if (!picture_.keyFrame && picture_.constant[block] != 0) continue;
    coded_[block] = static_cast<std::uint8_t>(quantiser_);
    owed_[block] = 0;
  }
  if (changed_ > 0 && !picture_.keyFrame) {
    motionQuantiser_ = quantiser_;
    lastMotion_ = pictures_;
    usualChange_ += kForgetting * (static_cast<double>(changed_) - usualChange_);
  }
}

}  // namespace vlm::platform::h264
