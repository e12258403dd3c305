#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
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

// The whole of a file, as text or as any container of bytes.
template <class Content = std::string>
Content contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Content(std::istreambuf_iterator<char>(file), {});
}

// A text, bytes or numbers as they are in memory.
template <class Content>
void writeFile(const std::string& path, const Content& content) {
  const auto bytes = std::as_bytes(std::span(content));
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

}  // namespace vlm::test
