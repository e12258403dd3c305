#include "options.h"

#include <sstream>

#include "whole_number.h"

namespace vlm::tools {

CLI::Validator within(double least, double most) {
  const auto check = [least, most](const std::string& text) {
    const auto value = wholeNumber<double>(text);
    if (value && *value >= least && *value <= most) return std::string();
    std::ostringstream complaint;
    complaint << "must be a number from " << least << " to " << most;
    return complaint.str();
  };
  return {check, ""};
}

void addOptions(CLI::App& command, ShareOptions& options) {
  auto& target = *command.add_option_group("Target", "what is captured; the first display if none");
  target
      .add_option("--display", options.target.display, "A display, by its number in `vlm displays`")
      ->type_name("ID");
  target.add_option("--window", options.target.window, "A window, also while others cover it")
      ->type_name("ID");
  target
      .add_option("--app", options.target.application,
                  "An application's windows, by the beginning of its name (the class in WM_CLASS)")
      ->type_name("PREFIX");
  target.require_option(0, 1);

  auto& stream = *command.add_option_group("Stream");
  stream.add_option("--fps", options.fps, "Frames a second at most (30)")
      ->type_name("NUMBER")
      ->check(CLI::Range(1, 1000).description(""));
  stream.add_option("--max-size", options.maxSize, "Largest size of a frame (as captured)")
      ->type_name("WxH");
  stream.add_option("--bitrate", options.bitRate, "Bits a second, like 2500k or 8M (8M)")
      ->type_name("RATE");
  stream.add_flag("--low-latency", options.lowLatency, "Keep every single frame small");
  stream.add_option("--keyframe-every", options.keyframeEvery, "Ask for key frames at this pace")
      ->type_name("SECONDS")
      ->check(within(0.001, kMostSeconds));
  stream.add_option("--audio", options.audioFile, "Write what other programs play to a file")
      ->type_name("FILE.wav");
  stream.add_option("--bitrate-change", options.bitRateChanges, "Another bit rate, like 2M@5")
      ->type_name("RATE@SECOND")
      ->allow_extra_args(false);
  stream.add_option("--max-size-change", options.maxSizeChanges, "Another largest size")
      ->type_name("WxH@SECOND")
      ->allow_extra_args(false);
}

void addOptions(CLI::App& command, ViewOptions& options) {
  auto& viewer = *command.add_option_group("Viewer");
  viewer.add_option("--viewer", options.placement, "Size and place of the viewer's window")
      ->type_name("WxH+X+Y");
  viewer.add_option("--snapshot", options.snapshot, "Write the last picture shown to a PNG file")
      ->type_name("FILE");
}

void addOptions(CLI::App& command, RunOptions& options) {
  command.add_option("--seconds", options.seconds, "End after this time (on Ctrl-C)")
      ->type_name("SECONDS")
      ->check(within(0.001, kMostSeconds));
  command.add_flag("--json", options.json, "Write the summary as JSON");
}

}  // namespace vlm::tools
