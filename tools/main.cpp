#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "VelmoraMacNative.h"
#include "command.h"
#include "description.h"
#include "failure.h"

namespace {

using namespace vlm::tools;

constexpr void (*kCommands[])(CLI::App& program, Job& chosen) = {
    addLoopback, addRecord, addPlay,      addDisplays, addFindWindow, addWindows,
    addBounds,   addTrack,  addType,      addPointer,  addHotkeys,    addDevices,
    addMic,      addTone,   addPlaySound, addSecret,   addMachineId,  addPermissions,
};

constexpr int kUsageError = 2;

int parseAndRun(int argc, char** argv) {
  CLI::App program{"Shares and views screens from the command line, by way of VelmoraMacNative."};
  program.require_subcommand(1);
  program.set_version_flag("--version", "vlm " VLM_PROGRAM_VERSION " (interface " +
                                            std::to_string(vlm_abi_version()) + ")");
  Job chosen;
  for (const auto add : kCommands) add(program, chosen);
  // For the build, which makes manual page and completions of it: in no group, so not in the help.
  program.add_option("--describe")->group("")->each([&](const std::string& form) {
    std::fputs(describe(program, form).c_str(), stdout);
    throw CLI::Success();
  });
  if (argc > 1 && argv[1][0] != '-') {
    const auto complaint = complaintAbout(program, argv[1]);
    if (!complaint.empty()) {
      std::fprintf(stderr, "vlm: %s\n", complaint.c_str());
      return kUsageError;
    }
  }
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : kUsageError;
  }
  const int status = chosen();
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    throw Failure("not everything could be written to standard output");
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return parseAndRun(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vlm: %s\n", error.what());
    return 1;
  }
}
