#include "viewer.h"

#include <chrono>
#include <thread>
#include <utility>

#include "failure.h"
#include "png_writer.h"

namespace vlm::tools {
namespace {

using namespace std::chrono_literals;

// How soon a busy view is tried again: well within a frame at any usual rate.
constexpr auto kRetryAfter = 4ms;
constexpr auto kLongestWait = 1s;

Presenter makePresenter() {
  Presenter presenter(vlm_present_create());
  if (!presenter) throw Failure("the system can't make a view to show frames in");
  return presenter;
}

}  // namespace

Viewer::Viewer(MainLoop& loop, SharedCounts& counts, const std::string& title,
               const Placement& placement)
    : loop_(loop),
      counts_(counts),
      window_(loop, title, placement),
      presenter_(makePresenter()),
      decoder_(vlm_dec_create(onFrame, this)) {
  if (!decoder_) throw Failure("the system has no H.264 decoder");
  window_.place(*static_cast<const std::uint32_t*>(vlm_present_view(presenter_.get())));
}

bool Viewer::decode(const AccessUnit& unit, std::int64_t ptsNs) {
  const auto size = static_cast<std::int32_t>(unit.bytes.size());
  const bool accepted = vlm_dec_decode(decoder_.get(), unit.bytes.data(), size, ptsNs);
  if (!accepted) counts_.change([](Counts& counts) { ++counts.undecodable; });
  return accepted;
}

void Viewer::settle() {
  vlm_dec_flush(decoder_.get());
  const auto isWaiting = [](const Frames& frames) { return frames.waiting.has_value(); };
  const auto limit = std::chrono::steady_clock::now() + kLongestWait;
  while (frames_.with(isWaiting) && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(kRetryAfter);
  }
}

void Viewer::stop() {
  decoder_.reset();
}

void Viewer::snapshot(const std::string& path) {
  frames_.with([&](const Frames& frames) {
    if (!frames.shown) throw Failure("there is no picture to write to " + path);
    writePng(frames.shown->buffer.get(), frames.shown->size, path);
  });
}

void Viewer::onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                     void* self) {
  auto& viewer = *static_cast<Viewer*>(self);
  viewer.loop_.guarded([&] { viewer.showNew({retained(pixbuf), {width, height}, ptsNs}); });
}

void Viewer::showNew(Frame frame) {
  loop_.post([this, size = frame.size] { window_.showShape(size); });
  frames_.with([&](Frames& frames) {
    const bool replaces = frames.waiting.has_value();
    counts_.change([&](Counts& counts) {
      ++counts.decoded;
      if (replaces) ++counts.dropped;
      counts.size = frame.size;
    });
    frames.waiting = std::move(frame);
    showWaiting(frames);
  });
}

// A frame that finds the view busy waits for it, for it may be the last one for long. A newer one
// takes its place.
void Viewer::showWaiting(Frames& frames) {
  if (!frames.waiting) return;
  const auto& [buffer, size, ptsNs] = *frames.waiting;
  const auto result = vlm_present_enqueue(presenter_.get(), buffer.get(), ptsNs);
  if (result == VLM_PRESENT_OK) {
    countShown(ptsNs);
    frames.shown = std::exchange(frames.waiting, std::nullopt);
  } else if (result != VLM_PRESENT_BUSY) {
    throw Failure("the view can't show a frame");
  } else if (!frames.willRetry) {
    frames.willRetry = true;
    loop_.after(kRetryAfter, [this] {
      frames_.with([this](Frames& retried) {
        retried.willRetry = false;
        showWaiting(retried);
      });
    });
  }
}

void Viewer::countShown(std::int64_t ptsNs) {
  const std::int64_t now = monotonicNow();
  counts_.change([&](Counts& counts) {
    ++counts.shown;
    if (counts.repeatedPts == 0 || ptsNs < counts.repeatedPts - 1) {
      counts.latency.add(std::chrono::nanoseconds(now - ptsNs));
    }
  });
}

}  // namespace vlm::tools
