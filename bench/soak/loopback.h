#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstdint>

#include "bench/support/shared_image.h"

namespace vlm::bench {

// A host that shares the first display with itself: captured, encoded, decoded, and shown in a
// window. The thread that makes it must be the main thread and iterate the main loop.
class Loopback {
 public:
  Loopback();
  ~Loopback();
  Loopback(const Loopback&) = delete;
  Loopback& operator=(const Loopback&) = delete;

  std::uint64_t captured() const { return captured_; }
  std::uint64_t decoded() const { return decoded_; }
  std::uint64_t shown() const { return shown_; }

 private:
  static void onFrame(void* image, std::int32_t width, std::int32_t height, std::int64_t pts,
                      void* user);
  static void onEncoded(const std::uint8_t* data, std::int32_t size, bool keyframe,
                        std::int64_t pts, void* user);
  static void onDecoded(void* image, std::int32_t width, std::int32_t height, std::int64_t pts,
                        void* user);

  Server server_;
  void* presenter_ = nullptr;
  void* decoder_ = nullptr;
  void* encoder_ = nullptr;
  void* capture_ = nullptr;
  std::atomic<std::uint64_t> captured_{0};
  std::atomic<std::uint64_t> decoded_{0};
  std::atomic<std::uint64_t> shown_{0};
};

}  // namespace vlm::bench
