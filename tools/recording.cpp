#include "recording.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "failure.h"

namespace vlm::tools {

Recording::Recording(std::string path) : path_(std::move(path)) {
  const int descriptor = open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor < 0) fail();
  file_.reset(fdopen(descriptor, "wb"));
  if (!file_) fail();
}

void Recording::begin() {
  if (std::exchange(hasBegun_, true)) return;
  // A pipe or a device refuses, having nothing to be emptied of.
  if (ftruncate(fileno(file_.get()), 0) != 0 && errno != EINVAL) fail();
}

void Recording::write(std::span<const std::uint8_t> bytes) {
  begin();
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) fail();
}

void Recording::rewind() {
  if (std::fseek(file_.get(), 0, SEEK_SET) != 0) fail();
}

void Recording::finish() {
  begin();
  if (std::fclose(file_.release()) != 0) fail();
}

void Recording::fail() const {
  throw Failure("can't write " + path_ + ": " + std::generic_category().message(errno));
}

}  // namespace vlm::tools
