#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/pipewire/handles.h"
#include "platform/linux/pipewire/stream_format.h"
#include "platform/portable/plane.h"

namespace vlm::platform::pipewire {

// The pictures of one node, through shared memory. It has no thread: its owner waits for the
// descriptor and dispatches. Only the newest picture is kept, an older one goes back to the
// compositor unseen.
class VideoStream {
 public:
  // Connects to the node over a descriptor, which it takes, and waits until size and kind of the
  // pictures are agreed on. Null and why when that fails or takes too long. Pictures wait for
  // begin().
  static std::unique_ptr<VideoStream> connect(int descriptor, std::uint32_t node,
                                              std::string& reason);
  ~VideoStream();
  // Makes the calling thread the one that everything happens on from here to the end, but for
  // hangUp().
  void begin();
  VideoStream(const VideoStream&) = delete;
  VideoStream& operator=(const VideoStream&) = delete;

  int descriptor() const;
  // Handles what has come; waits for nothing.
  void dispatch();
  // Why nothing comes any more.
  const std::optional<std::string>& ended() const { return ended_; }
  // Makes descriptor() readable and the stream end. Any thread.
  void hangUp() noexcept;

  // The size of the pictures that come from now on.
  Size size() const { return size_; }
  // The newest picture; without pixels until there is one of this size.
  PlaneView pixels() const { return pixels_; }
  bool hasDamage() const { return pixels_.pixels != nullptr && !damage_.empty(); }
  // Where pictures changed since this was called last.
  std::vector<Rectangle> takeDamage();

 private:
  VideoStream() = default;

  bool open(int descriptor, std::uint32_t node);
  bool waitForFormat(std::chrono::milliseconds limit);
  void end(const char* reason);

  static void onError(void* self, std::uint32_t id, int sequence, int result, const char* message);
  static void onState(void* self, pw_stream_state before, pw_stream_state now, const char* error);
  static void onFormat(void* self, std::uint32_t id, const spa_pod* format);
  static void onBufferRemoved(void* self, pw_buffer* buffer);
  static void onProcess(void* self);

  PlaneView pixelsOf(const spa_buffer& buffer) const;
  void addDamage(const spa_buffer& buffer);
  void keep(pw_buffer* buffer);

  Loop loop_;
  std::atomic<std::thread::id> owner_;  // of the loop; none until it is known
  spa_source* farewell_ = nullptr;
  Context context_;
  Core core_;
  Stream stream_;
  spa_hook coreListener_{};
  spa_hook streamListener_{};

  pw_buffer* held_ = nullptr;
  PlaneView pixels_;
  Size size_;
  std::vector<Rectangle> damage_;
  std::optional<std::string> ended_;
};

}  // namespace vlm::platform::pipewire
