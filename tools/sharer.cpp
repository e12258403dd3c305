#include "sharer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

#include "displays.h"
#include "failure.h"

namespace vlm::tools {
namespace {

// How often a look is taken whether the last frame got lost, and when it counts as lost: late
// enough that an encoder which is only slow is not given more to do.
constexpr std::chrono::milliseconds kLossCheck{250};
constexpr std::chrono::nanoseconds kLostAfter = std::chrono::seconds(1);

// A still frame is as sharp as it gets when access units have been no larger for two seconds.
constexpr std::size_t kNothingNew = 500;
constexpr std::int32_t kQuietSeconds = 2;

// Keeps time stamps rising where a grab and a repetition meet, in nanoseconds.
constexpr std::int64_t kShortestStep = 1'000;

std::string hex(std::uint32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", id);
  return text;
}

std::string whyNotStarted(const Target& target) {
  if (!vlm_screen_capture_ready()) return "there is no screen that can be captured";
  if (target.window) return "no window " + hex(*target.window) + " is on the screen";
  if (target.application) {
    return "no application whose name begins with '" + *target.application + "' can be captured";
  }
  return "the display can't be captured";
}

Rectangle capturedFrame(void* capture) {
  double x = 0, y = 0, width = 0, height = 0;
  vlm_capture_bounds(capture, &x, &y, &width, &height);
  const auto whole = [](double points) { return static_cast<std::int32_t>(points); };
  return {whole(x), whole(y), {whole(width), whole(height)}};
}

}  // namespace

std::string description(const Target& target) {
  if (target.window) return "window " + hex(*target.window);
  if (target.application) return "application " + *target.application;
  return target.display == 0 ? "the first display" : "display " + std::to_string(target.display);
}

Sharer::Sharer(const SharingOptions& options, MainLoop& loop, SharedCounts& counts, Sink sink)
    : options_(options),
      loop_(loop),
      counts_(counts),
      sink_(std::move(sink)),
      watch_(loop, options.target.window.value_or(0)) {
  constexpr std::uint16_t kChannels = 2;
  constexpr std::uint32_t kSampleRate = 48000;
  if (!options.audioFile.empty()) audio_.emplace(options.audioFile, kChannels, kSampleRate);
  setBitRate(options.bitRate);
  startCapture();
  loop_.every(kLossCheck, [this] { repeatIfLost(); });
}

void Sharer::startCapture() {
  const auto& target = options_.target;
  const auto fps = options_.fps;
  const auto [maxW, maxH] = options_.maxSize;
  const vlm_audio_cb audio = audio_ ? onAudio : nullptr;
  if (target.window) {
    capture_.reset(vlm_capture_start_window(*target.window, fps, maxW, maxH, onFrame, audio, this));
  } else if (target.application) {
    capture_.reset(
        vlm_capture_start_app(target.application->c_str(), fps, maxW, maxH, onFrame, audio, this));
  } else {
    const auto wanted =
        target.display != 0 ? std::optional(displayWithId(target.display)) : std::nullopt;
    capture_.reset(
        vlm_capture_start_display(target.display, fps, maxW, maxH, onFrame, audio, this));
    // The library takes the first display for one that is gone.
    if (capture_ && wanted && capturedFrame(capture_.get()) != wanted->frame) capture_.reset();
  }
  if (!capture_) throw Failure(whyNotStarted(target));
}

void Sharer::setMaxSize(Size maxSize) {
  options_.maxSize = maxSize;
  capture_.reset();
  startCapture();
}

void Sharer::setBitRate(BitRate bitRate) {
  encoding_.with([&](Encoding& encoding) {
    encoding.bitRate = bitRate;
    vlm_enc_set_bitrate(encoding.encoder.get(), bitRate.bitsPerSecond);
  });
}

void Sharer::requestKeyframe() {
  encoding_.with([&](Encoding& encoding) { repeatLast(encoding, true); });
}

void Sharer::stop() {
  endCapture();
  if (audio_) audio_->finish();
  audio_.reset();
}

void Sharer::endCapture() {
  capture_.reset();
  // Taken out first: what is in flight is delivered while the encoder ends.
  encoding_.with([](Encoding& encoding) {
    encoding.lastFrame.reset();
    return std::exchange(encoding.encoder, nullptr);
  });
}

void Sharer::onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                     void* self) {
  auto& sharer = *static_cast<Sharer*>(self);
  sharer.loop_.guarded([&] { sharer.encodeNew(pixbuf, {width, height}, ptsNs); });
}

void Sharer::onAudio(const float* samples, std::int32_t frames, std::int32_t channels, std::int32_t,
                     void* self) {
  auto& sharer = *static_cast<Sharer*>(self);
  const auto count = static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels);
  sharer.loop_.guarded([&] { sharer.audio_->write({samples, count}); });
}

void Sharer::onEncoded(const std::uint8_t* data, std::int32_t size, bool keyframe,
                       std::int64_t ptsNs, void* self) {
  auto& sharer = *static_cast<Sharer*>(self);
  const AccessUnit unit{{data, static_cast<std::size_t>(size)}, keyframe};
  if (keyframe) sharer.keyframePts_ = ptsNs;
  sharer.encodedPts_ = ptsNs;
  if (unit.bytes.size() > kNothingNew) {
    sharer.quiet_ = 0;
  } else {
    ++sharer.quiet_;
  }
  sharer.counts_.change([&](Counts& counts) {
    ++counts.encoded;
    counts.bytes += unit.bytes.size();
    if (keyframe) ++counts.keyframes;
  });
  sharer.loop_.guarded([&] {
    if (!sharer.sink_(unit, ptsNs)) sharer.loop_.post([&sharer] { sharer.requestKeyframe(); });
  });
}

void Sharer::encodeNew(void* pixbuf, Size size, std::int64_t ptsNs) {
  counts_.change([&](Counts& counts) {
    ++counts.captured;
    counts.size = size;
    counts.repeatedPts = 0;
  });
  encoding_.with([&](Encoding& encoding) {
    if (!encoding.encoder) {
      encoding.encoder.reset(vlm_enc_create(size.width, size.height, options_.fps,
                                            encoding.bitRate.bitsPerSecond, options_.lowLatency,
                                            onEncoded, this));
      if (!encoding.encoder) throw Failure("the system has no H.264 encoder for this size");
    }
    encoding.lastFrame = retained(pixbuf);
    encoding.capturedPts = ptsNs;
    // The frame that was to be a key frame was passed over if a later one has come out.
    const bool isPassedOver = encodedPts_ > encoding.forcedPts && isKeyframeMissing(encoding);
    submit(encoding, pixbuf, ptsNs, isPassedOver);
  });
  quiet_ = 0;
  if (!sharpens_.exchange(true)) sharpenLater();
}

// A frame grabbed before the last one was submitted again would turn time back.
void Sharer::submit(Encoding& encoding, void* pixbuf, std::int64_t ptsNs, bool forceKeyframe) {
  encoding.lastPts = std::max(ptsNs, encoding.lastPts + kShortestStep);
  if (forceKeyframe) encoding.forcedPts = encoding.lastPts;
  if (!vlm_enc_encode(encoding.encoder.get(), pixbuf, encoding.lastPts, forceKeyframe)) {
    counts_.change([](Counts& counts) { ++counts.refused; });
  }
}

void Sharer::repeatLast(Encoding& encoding, bool forceKeyframe) {
  if (!encoding.lastFrame) return;
  const std::int64_t now = std::max(monotonicNow(), encoding.lastPts + kShortestStep);
  counts_.change([&](Counts& counts) {
    ++counts.repeated;
    if (counts.repeatedPts == 0) counts.repeatedPts = now;
  });
  submit(encoding, encoding.lastFrame.get(), now, forceKeyframe);
}

bool Sharer::isKeyframeMissing(const Encoding& encoding) const {
  return keyframePts_ < encoding.forcedPts && !isSameTime(keyframePts_, encoding.forcedPts);
}

// An encoder that can't keep up drops a frame in silence. When the screen is still afterwards
// no other frame would make up for it.
void Sharer::repeatIfLost() {
  encoding_.with([&](Encoding& encoding) {
    const bool isLost = !isSameTime(encodedPts_, encoding.lastPts) &&
                        monotonicNow() - encoding.lastPts > kLostAfter.count();
    if (isLost) repeatLast(encoding, isKeyframeMissing(encoding));
  });
}

void Sharer::sharpenLater() {
  const std::chrono::milliseconds frame{1000 / std::max(options_.fps, 1)};
  loop_.after(frame, [this] { sharpen(); });
}

// Submits the last frame again, at the frame rate, while none comes from the capture. One that is
// due comes within a frame's time, and up to half of another late.
void Sharer::sharpen() {
  const std::int64_t frame = 1'000'000'000 / std::max(options_.fps, 1);
  const bool goesOn = encoding_.with([&](Encoding& encoding) {
    if (!encoding.lastFrame) return false;
    const std::int64_t now = monotonicNow();
    const bool isStill = now - encoding.capturedPts > frame + frame / 2;
    if (isStill && now - encoding.lastPts > frame / 2) repeatLast(encoding, false);
    return quiet_ < kQuietSeconds * std::max(options_.fps, 1);
  });
  if (goesOn) return sharpenLater();
  sharpens_ = false;
  // A frame that has come meanwhile counted on this.
  if (quiet_ == 0 && !sharpens_.exchange(true)) sharpenLater();
}

}  // namespace vlm::tools
