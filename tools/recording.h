#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace vlm::tools {

// A file that takes a byte stream. Every failure to write throws a Failure. What the file held
// before goes when something new comes, so that a start that fails destroys no recording.
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

  void begin();
  [[noreturn]] void fail() const;

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
  bool hasBegun_ = false;
};

}  // namespace vlm::tools
