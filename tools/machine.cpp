#include <cstdio>
#include <nlohmann/json.hpp>

#include "command.h"
#include "failure.h"
#include "library.h"

namespace vlm::tools {
namespace {

struct MachineOptions {};

int machineId(const MachineOptions&) {
  char id[128];
  if (vlm_machine_id(id, sizeof id) == 0) throw Failure("this computer has no identifier");
  std::printf("%s\n", id);
  return 0;
}

struct PermissionOptions {
  bool request = false;
  bool json = false;
  std::string settings;
};

int permissions(const PermissionOptions& options) {
  if (!options.settings.empty() && !vlm_perm_open_settings(options.settings.c_str())) {
    throw Failure("nothing on this system opens such settings");
  }
  const bool screen = vlm_perm_screen_recording(options.request);
  const bool accessibility = vlm_perm_accessibility(options.request);
  if (options.json) {
    const nlohmann::json answer{{"screenRecording", screen}, {"accessibility", accessibility}};
    std::printf("%s\n", answer.dump().c_str());
  } else {
    std::printf("screen recording  %s\naccessibility     %s\n", screen ? "yes" : "no",
                accessibility ? "yes" : "no");
  }
  return 0;
}

}  // namespace

void addMachineId(CLI::App& program, Job& chosen) {
  addCommand(program, chosen, "machine-id", "Print a stable identifier of this computer",
             std::make_shared<MachineOptions>(), machineId);
}

void addPermissions(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<PermissionOptions>();
  auto& command = addCommand(program, chosen, "permissions", "Tell what this session permits",
                             options, permissions);
  command.add_flag("--request", options->request, "Ask the user for what is missing");
  command.add_flag("--json", options->json, "Print a JSON object");
  command
      .add_option("--open-settings", options->settings,
                  "Open the settings for screen, accessibility or microphone first")
      ->type_name("KIND");
}

}  // namespace vlm::tools
