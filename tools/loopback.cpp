#include <optional>

#include "command.h"
#include "options.h"
#include "recording.h"
#include "run.h"
#include "viewer.h"

namespace vlm::tools {
namespace {

struct LoopbackOptions {
  ShareOptions share;
  ViewOptions view;
  RunOptions run;
  std::string record;
};

int loopback(const LoopbackOptions& options) {
  std::optional<Recording> recording;
  if (!options.record.empty()) recording.emplace(options.record);
  MainLoop loop;
  SharedCounts counts;
  const std::string source = description(options.share.target);
  Viewer viewer(loop, counts, "Loopback of " + source, options.view.placement);
  Sharer sharer(options.share, loop, counts, [&](const AccessUnit& unit, std::int64_t ptsNs) {
    if (recording) recording->write(unit.bytes);
    return viewer.decode(unit, ptsNs);
  });
  scheduleChanges(options.share, loop, sharer);
  return runAndTell({"loopback", source}, options.run, loop, counts, [&] {
    sharer.stop();
    viewer.stop();
    if (recording) recording->finish();
    if (!options.view.snapshot.empty()) viewer.snapshot(options.view.snapshot);
  });
}

}  // namespace

void addLoopback(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<LoopbackOptions>();
  auto& command = addCommand(program, chosen, "loopback",
                             "Capture, encode, decode and show in a window", options, loopback);
  addOptions(command, options->share);
  addOptions(command, options->view);
  addOptions(command, options->run);
  command.add_option("--record", options->record, "Write the stream to a file as well")
      ->type_name("FILE.h264");
}

}  // namespace vlm::tools
