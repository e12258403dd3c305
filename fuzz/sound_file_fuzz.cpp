// No bytes in a sound file make its reader crash, hang or leak.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/linux/pulse/sound_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("sound", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) {
    std::abort();
  }
  const auto sound = vlm::platform::pulse::readSound(path);
  if (sound && (sound->channels == 0 || sound->samples.size() % sound->channels != 0)) std::abort();
  return 0;
}
