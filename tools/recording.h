#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace vlm::tools {

// A file that takes a byte stream. Every failure to write is told as a Failure.
class Recording {
 public:
  explicit Recording(std::string path);

  void write(std::span<const std::uint8_t> bytes);
  // Goes back to the beginning, where the next write overwrites.
  void rewind();
  // Makes sure that everything has reached the file. Nothing is written afterwards.
  void finish();

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  [[noreturn]] void fail() const;

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace vlm::tools
