#include "bench/support/stream_file.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vlm::bench {

StreamFile::StreamFile(const std::string& path) : file_(std::fopen(path.c_str(), "wb")) {
  if (!file_) throw std::runtime_error("no file " + path);
}

void StreamFile::add(std::span<const std::uint8_t> unit) {
  const auto length = static_cast<std::uint32_t>(unit.size());
  std::fwrite(&length, sizeof length, 1, file_.get());
  std::fwrite(unit.data(), 1, unit.size(), file_.get());
}

std::vector<AccessUnit> readStream(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const AccessUnit bytes{std::istreambuf_iterator<char>(file), {}};
  std::vector<AccessUnit> units;
  for (std::span rest(bytes); rest.size() > sizeof(std::uint32_t);) {
    std::uint32_t length = 0;
    std::memcpy(&length, rest.data(), sizeof length);
    rest = rest.subspan(sizeof length);
    if (rest.size() < length) break;
    units.emplace_back(rest.begin(), rest.begin() + length);
    rest = rest.subspan(length);
  }
  if (units.empty()) throw std::runtime_error("no stream in " + path);
  return units;
}

}  // namespace vlm::bench
