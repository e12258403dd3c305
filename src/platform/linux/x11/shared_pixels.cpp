#include "platform/linux/x11/shared_pixels.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {
namespace {

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  int get() const noexcept { return descriptor_; }

 private:
  const int descriptor_;
};

}  // namespace

std::unique_ptr<SharedPixels> SharedPixels::make(xcb_connection_t* connection, std::size_t size) {
  if (!supports(connection, Extension::memory)) return nullptr;
  const FileDescriptor memory(memfd_create("vlm-pixels", MFD_CLOEXEC));
  if (memory.get() < 0 || ftruncate(memory.get(), static_cast<off_t>(size)) != 0) return nullptr;
  void* data = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
  if (data == MAP_FAILED) return nullptr;
  std::unique_ptr<SharedPixels> pixels(
      new SharedPixels(connection, static_cast<std::uint8_t*>(data), size));
  return pixels->attach(memory.get()) ? std::move(pixels) : nullptr;
}

bool SharedPixels::attach(int memory) {
  const int sent = fcntl(memory, F_DUPFD_CLOEXEC, 0);  // XCB closes what it sends
  if (sent < 0) return false;
  const xcb_shm_seg_t segment = xcb_generate_id(connection_);
  const Reply<xcb_generic_error_t> refused(xcb_request_check(
      connection_, xcb_shm_attach_fd_checked(connection_, segment, sent, /*read_only=*/0)));
  if (refused || xcb_connection_has_error(connection_) != 0) return false;
  segment_ = segment;
  return true;
}

SharedPixels::~SharedPixels() {
  if (segment_ != XCB_NONE) xcb_shm_detach(connection_, segment_);
  munmap(data_, size_);
}

}  // namespace vlm::platform::x11
