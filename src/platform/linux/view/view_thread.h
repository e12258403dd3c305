#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>

#include "platform/core_graphics.h"
#include "platform/linux/view/display_layer.h"
#include "platform/linux/view/wake_up.h"
#include "platform/linux/x11/connection.h"
#include "platform/mutex.h"
#include "platform/portable/thread.h"

namespace vlm::platform::view {

class ViewRenderer;

// The thread behind one view, the only one that talks to the X server for it: whatever the server
// does, no other thread waits.
class ViewThread {
 public:
  // Waits for the server; null when no window can be made. `moved` is called on the new thread
  // when the view came into another window.
  static std::unique_ptr<ViewThread> start(std::function<void()> moved);
  // Ends the window with the thread. Does not wait for the server.
  ~ViewThread();
  ViewThread(const ViewThread&) = delete;
  ViewThread& operator=(const ViewThread&) = delete;

  // Any thread. What is ordered is done a little later.

  // The window of the moment. Waits until the server has confirmed that the window exists, or a new
  // one has been made; without an answer within a second it is the last one known.
  xcb_window_t confirmedWindow() VLM_EXCLUDES(mutex_);
  bool isInHost() const VLM_EXCLUDES(mutex_);
  CGSize size() const VLM_EXCLUDES(mutex_);
  void setLayer(std::shared_ptr<DisplayLayer> layer) VLM_EXCLUDES(mutex_);
  void takeOut() VLM_EXCLUDES(mutex_);

 private:
  explicit ViewThread(std::function<void()> moved) : moved_(std::move(moved)) {}

  void main(std::promise<bool> started);
  std::unique_ptr<ViewRenderer> makeRenderer();
  // False when the thread is to end.
  bool applyRequests(ViewRenderer& renderer) VLM_EXCLUDES(mutex_);
  void publish(const ViewRenderer& renderer) VLM_EXCLUDES(mutex_);
  void sleep(const ViewRenderer& renderer) const;

  const std::function<void()> moved_;
  const std::shared_ptr<const WakeUp> wakeUp_ = std::make_shared<WakeUp>();
  // Written once, before start() returns.
  std::shared_ptr<x11::Connection> connection_;

  mutable Mutex mutex_;
  // Confirmations of the window, counted.
  std::uint64_t asked_ VLM_GUARDED_BY(mutex_) = 0;
  std::uint64_t inWork_ VLM_GUARDED_BY(mutex_) = 0;
  std::uint64_t answered_ VLM_GUARDED_BY(mutex_) = 0;
  std::condition_variable_any confirmed_;
  xcb_window_t window_ VLM_GUARDED_BY(mutex_) = XCB_NONE;
  std::shared_ptr<DisplayLayer> newLayer_ VLM_GUARDED_BY(mutex_);
  bool takeOutWanted_ VLM_GUARDED_BY(mutex_) = false;
  bool ended_ VLM_GUARDED_BY(mutex_) = false;
  bool inHost_ VLM_GUARDED_BY(mutex_) = false;
  CGSize size_ VLM_GUARDED_BY(mutex_);

  Thread thread_;
};

}  // namespace vlm::platform::view
