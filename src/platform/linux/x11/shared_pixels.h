#pragma once

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vlm::platform::x11 {

// Memory that this process and the X server both see, so that pictures go either way without
// passing through the connection.
class SharedPixels {
 public:
  // Waits for the server. Null when it does not share memory (it is another machine's, or has no
  // MIT-SHM), or there is none left.
  static std::unique_ptr<SharedPixels> make(xcb_connection_t* connection, std::size_t size);
  ~SharedPixels();
  SharedPixels(const SharedPixels&) = delete;
  SharedPixels& operator=(const SharedPixels&) = delete;

  std::uint8_t* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  xcb_shm_seg_t segment() const noexcept { return segment_; }

 private:
  SharedPixels(xcb_connection_t* connection, std::uint8_t* data, std::size_t size)
      : connection_(connection), data_(data), size_(size) {}
  bool attach(int memory);

  xcb_connection_t* const connection_;
  std::uint8_t* const data_;
  const std::size_t size_;
  xcb_shm_seg_t segment_ = XCB_NONE;
};

}  // namespace vlm::platform::x11
