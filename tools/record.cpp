#include "command.h"
#include "options.h"
#include "recording.h"
#include "run.h"

namespace vlm::tools {
namespace {

struct RecordOptions {
  ShareOptions share;
  RunOptions run;
  std::string file;
};

int record(const RecordOptions& options) {
  Recording recording(options.file);
  MainLoop loop;
  SharedCounts counts;
  Sharer sharer(options.share, loop, counts, [&](const AccessUnit& unit, std::int64_t) {
    recording.write(unit.bytes);
    return true;
  });
  scheduleChanges(options.share, loop, sharer);
  return runAndTell({"record", description(options.share.target)}, options.run, loop, counts, [&] {
    sharer.stop();
    recording.finish();
  });
}

}  // namespace

void addRecord(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<RecordOptions>();
  auto& command =
      addCommand(program, chosen, "record", "Capture and encode into a file", options, record);
  command.add_option("file", options->file, "The H.264 byte stream to write")
      ->type_name("FILE.h264")
      ->required();
  addOptions(command, options->share);
  addOptions(command, options->run);
}

}  // namespace vlm::tools
