#include "recording.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "failure.h"

namespace vlm::tools {

Recording::Recording(std::string path)
    : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wb")) {
  if (!file_) fail();
}

void Recording::write(std::span<const std::uint8_t> bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) fail();
}

void Recording::rewind() {
  if (std::fseek(file_.get(), 0, SEEK_SET) != 0) fail();
}

void Recording::finish() {
  if (std::fclose(file_.release()) != 0) fail();
}

void Recording::fail() const {
  throw Failure("can't write " + path_ + ": " + std::generic_category().message(errno));
}

}  // namespace vlm::tools
