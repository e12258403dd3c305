#pragma once

#include <filesystem>
#include <string>

namespace vlm::test {

// A folder that goes with its content.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// The whole of a file, as text.
std::string contentsOf(const std::string& path);

}  // namespace vlm::test
