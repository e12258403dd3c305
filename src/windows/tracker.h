#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "VelmoraMacNative.h"
#include "frame/handle.h"
#include "platform/application_services.h"

namespace vlm::windows {

// Follows the windows of one process: each notification becomes an event code and the rectangle
// that the process's focused window has at that moment.
class VlmWindowTracker final : public frame::HandleObject<VlmWindowTracker> {
 public:
  // Null when the process can't be observed. `cb` is never null; it is called on the main thread.
  static std::shared_ptr<VlmWindowTracker> track(std::int32_t pid, vlm_track_cb cb, void* user);

  VlmWindowTracker(platform::Ref<platform::AXUIElement> application, vlm_track_cb cb, void* user)
      : appElement_(std::move(application)), cb_(cb), user_(user) {}
  ~VlmWindowTracker() { stop(); }

  // Ends delivery. No callback begins after this; one that runs on the main thread right now is
  // waited for, unless this is called from it.
  void stop();

 private:
  bool observe(std::int32_t pid);
  void handle(std::string_view notification);

  platform::Ref<platform::AXObserver> observer_;
  const platform::Ref<platform::AXUIElement> appElement_;
  const vlm_track_cb cb_;
  void* const user_;
  // Held while a callback runs, so that a stop on another thread waits for it; recursive, so that
  // the callback itself may stop the tracker.
  std::recursive_mutex delivery_;
  // Guarded by it without an annotation: the analysis knows no lock that is taken twice.
  bool stopped_ = false;
};

}  // namespace vlm::windows
