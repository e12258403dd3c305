#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vlm::tools {

// The program's description of itself in another form: "man" for a manual page, "bash" or "zsh" for
// the shell's completion. Throws Failure for any other.
std::string describe(const CLI::App& program, const std::string& form);

// What to write about a word that is no command: the nearest one. Empty when it is a command.
std::string complaintAbout(const CLI::App& program, const std::string& word);

}  // namespace vlm::tools
