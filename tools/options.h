#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "geometry.h"
#include "sharer.h"
#include "values.h"

namespace vlm::tools {

// Refuses numbers outside, and what is no number.
CLI::Validator within(double least, double most);

// What commands that share have in common.
struct ShareOptions : SharingOptions {
  double keyframeEvery = 0;
  std::vector<BitRateChange> bitRateChanges;
  std::vector<SizeChange> maxSizeChanges;
};
void addOptions(CLI::App& command, ShareOptions& options);

// What commands with a viewer window have in common.
struct ViewOptions {
  Placement placement;
  std::string snapshot;
};
void addOptions(CLI::App& command, ViewOptions& options);

// What commands that run for a while have in common.
struct RunOptions {
  double seconds = 0;
  bool json = false;
};
void addOptions(CLI::App& command, RunOptions& options);

}  // namespace vlm::tools
