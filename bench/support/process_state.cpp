#include "bench/support/process_state.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vlm::bench {
namespace {

// The number behind a key of the process's status.
long statusValue(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key)) return std::strtol(line.c_str() + key.size(), nullptr, 10);
  }
  return -1;
}

long openDescriptors() {
  // The listing itself holds one.
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<long>(std::distance(begin(all), end(all))) - 1;
}

long mappedSegments() {
  std::ifstream maps("/proc/self/maps");
  long count = 0;
  for (std::string line; std::getline(maps, line);) {
    count += line.find("/memfd:") != std::string::npos || line.find("/SYSV") != std::string::npos;
  }
  return count;
}

}  // namespace

ProcessState ProcessState::now() {
  return {statusValue("VmRSS:"), statusValue("Threads:"), openDescriptors(), mappedSegments()};
}

}  // namespace vlm::bench
