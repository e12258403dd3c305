#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>

namespace vlm::tools {

// What the person chose to run. It returns the program's exit status.
using Job = std::function<int()>;

// Adds a command whose options are parsed into `Options` and given to `run`.
template <class Options>
CLI::App& addCommand(CLI::App& program, Job& chosen, const std::string& name,
                     const std::string& description, const std::shared_ptr<Options>& options,
                     int (*run)(const Options&)) {
  auto* command = program.add_subcommand(name, description);
  command->callback([&chosen, options, run] { chosen = [options, run] { return run(*options); }; });
  return *command;
}

// One file for each command.
void addLoopback(CLI::App& program, Job& chosen);
void addRecord(CLI::App& program, Job& chosen);
void addPlay(CLI::App& program, Job& chosen);
void addFindWindow(CLI::App& program, Job& chosen);
void addDisplays(CLI::App& program, Job& chosen);
void addWindows(CLI::App& program, Job& chosen);
void addBounds(CLI::App& program, Job& chosen);
void addTrack(CLI::App& program, Job& chosen);
void addType(CLI::App& program, Job& chosen);
void addPointer(CLI::App& program, Job& chosen);
void addHotkeys(CLI::App& program, Job& chosen);
void addDevices(CLI::App& program, Job& chosen);
void addMic(CLI::App& program, Job& chosen);
void addTone(CLI::App& program, Job& chosen);
void addPlaySound(CLI::App& program, Job& chosen);
void addSecret(CLI::App& program, Job& chosen);
void addMachineId(CLI::App& program, Job& chosen);
void addPermissions(CLI::App& program, Job& chosen);

}  // namespace vlm::tools
