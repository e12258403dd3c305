// The viewing side's pictures: decoded and shown as they come.
#pragma once

#include <mutex>

#include "library.h"
#include "loop.h"
#include "protocol.h"

namespace remote {

class ScreenView {
 public:
  // `sized` is called on the main loop with the size of a picture that differs from the last one.
  explicit ScreenView(std::function<void(int, int)> sized)
      : sized_(std::move(sized)), presenter_(vlm_present_create()) {
    if (!presenter_) throw std::runtime_error("no view can be made");
    restart();
    clock_ = Source::every(Milliseconds(5), [this] {
      const std::lock_guard lock(mutex_);
      if (waiting_) show();
    });
  }
  ~ScreenView() { decoder_.reset(); }

  u32 window() const { return *static_cast<const u32*>(vlm_present_view(presenter_.get())); }
  // Another stream follows.
  void restart() { decoder_.reset(vlm_dec_create(onFrame, this)); }

  // False when a key frame is needed.
  bool decode(const Bytes& unit) {
    return vlm_dec_decode(decoder_.get(), unit.data(), static_cast<std::int32_t>(unit.size()), 0);
  }

  // Pictures shown and passed over since the last call.
  std::pair<u16, u16> counts() {
    const std::lock_guard lock(mutex_);
    return std::exchange(counts_, {});
  }

 private:
  static void onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t,
                      void* self) {
    auto& view = *static_cast<ScreenView*>(self);
    const std::lock_guard lock(view.mutex_);
    const std::pair size(width, height);
    if (size != std::exchange(view.size_, size)) {
      view.mailbox_.post([&view, size] { view.sized_(size.first, size.second); });
    }
    if (view.waiting_) ++view.counts_.second;
    view.waiting_ = retained(pixbuf);
    view.show();
  }

  // One that the display is not ready for waits until it is or a newer one comes.
  void show() {
    if (vlm_present_enqueue(presenter_.get(), waiting_.get(), 0) == VLM_PRESENT_BUSY) return;
    waiting_.reset();
    ++counts_.first;
  }

  const std::function<void(int, int)> sized_;
  std::mutex mutex_;
  std::pair<int, int> size_;  // these three under mutex_
  std::pair<u16, u16> counts_{};
  PixelBuffer waiting_;

  PresenterHandle presenter_;
  Mailbox mailbox_;
  Source clock_;
  DecoderHandle decoder_;
};

}  // namespace remote
