#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vlm::bench {

using AccessUnit = std::vector<std::uint8_t>;

// Access units in a file, each behind its length, so that no player has to search for their ends.
class StreamFile {
 public:
  // Throws when the file can't be made.
  explicit StreamFile(const std::string& path);
  void add(std::span<const std::uint8_t> unit);

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file_;
};

// Throws when there is no unit in the file. The last unit is left out when it is not whole.
std::vector<AccessUnit> readStream(const std::string& path);

}  // namespace vlm::bench
