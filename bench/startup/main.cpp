// How soon a host has its first access unit and its first decoded picture, beside GStreamer, in
// turns of new processes on the same X server. Arguments: the library, rounds.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/private_desktop.h"

namespace vlm::bench {
namespace {

// Loading, first access unit, first picture; resident memory after the loading.
using Figures = std::array<double, 4>;

std::string besideUs(const std::string& program) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / program).string();
}

Figures figuresOf(const std::vector<std::string>& command) {
  std::istringstream output(test::outputOf(command));
  Figures figures{};
  for (auto& figure : figures) output >> figure;
  return figures;
}

Figures medians(const std::vector<Figures>& rounds) {
  Figures result{};
  for (std::size_t i = 0; i < result.size(); ++i) {
    std::vector<double> values;
    for (const auto& round : rounds) values.push_back(round[i]);
    std::ranges::nth_element(values,
                             values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    result[i] = values[values.size() / 2];
  }
  return result;
}

void run(const std::string& library, int rounds) {
  const test::PrivateDesktop desktop;
  test::runCommand({besideUs("vlm_bench_content"), "wallpaper"});
  std::vector<Figures> ours;
  std::vector<Figures> peer;
  for (int round = 0; round < rounds; ++round) {
    ours.push_back(figuresOf({besideUs("vlm_bench_startup_ours"), library}));
    peer.push_back(figuresOf({besideUs("vlm_bench_startup_gstreamer")}));
  }
  const Figures us = medians(ours);
  const Figures them = medians(peer);
  const char* const names[] = {"loading, ms", "first access unit, ms", "first picture, ms",
                               "resident after loading, kB"};
  std::printf("|                            |     ours | GStreamer | ratio |\n");
  std::printf("|----------------------------|---------:|----------:|------:|\n");
  for (std::size_t i = 0; i < us.size(); ++i) {
    std::printf("| %-26s | %8.1f | %9.1f | %5.2f |\n", names[i], us[i], them[i], us[i] / them[i]);
  }
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  if (count < 2) return 2;
  try {
    vlm::bench::run(arguments[1], count > 2 ? std::atoi(arguments[2]) : 15);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "startup: %s\n", error.what());
    return 1;
  }
}
