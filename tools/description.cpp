#include "description.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <string_view>
#include <vector>

#include "failure.h"

namespace vlm::tools {
namespace {

// The commands of the program, or an app's groups of options with the app itself in front.
std::vector<const CLI::App*> partsOf(const CLI::App& app, bool groups) {
  std::vector<const CLI::App*> parts;
  if (groups) parts.push_back(&app);
  for (const auto* each : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (each->get_name().empty() == groups) parts.push_back(each);
  }
  return parts;
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
  std::vector<const CLI::Option*> options;
  for (const auto* part : partsOf(command, true)) {
    for (const auto* option : part->get_options()) {
      const bool isInherited = part != &command && option == part->get_help_ptr();
      if (!option->get_group().empty() && !isInherited) options.push_back(option);
    }
  }
  return options;
}

std::string typeOf(const CLI::Option& option) {
  return option.get_expected_max() == 0 ? "" : " " + option.get_type_name();
}

// A hyphen or a point in front means something to the formatter.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char each : text) result += each == '-' ? "\\-" : std::string(1, each);
  return result.starts_with('.') ? "\\&" + result : result;
}

void writeOptions(std::ostream& out, const CLI::App& command) {
  for (const auto* option : optionsOf(command)) {
    out << ".TP\n\\fB"
        << escaped(option->nonpositional() ? option->get_name(false, true) : option->get_name(true))
        << "\\fR" << escaped(typeOf(*option)) << '\n'
        << escaped(option->get_description()) << '\n';
  }
}

std::string manualPage(const CLI::App& program) {
  std::ostringstream out;
  out << ".TH VLM 1 \"\" \"vlm " VLM_PROGRAM_VERSION "\"\n.SH NAME\nvlm \\- "
      << "share and view screens from the command line\n"
      << ".SH SYNOPSIS\n.B vlm\n.I COMMAND\n[\\fIOPTIONS\\fR]\n.SH DESCRIPTION\n"
      << escaped(program.get_description()) << "\n.SH OPTIONS\n";
  writeOptions(out, program);
  out << ".SH COMMANDS\n";
  for (const auto* command : partsOf(program, false)) {
    out << ".SS " << command->get_name() << '\n' << escaped(command->get_description()) << '\n';
    writeOptions(out, *command);
  }
  return out.str();
}

// The words that may follow, of one command.
std::string longOptionsOf(const CLI::App& command) {
  std::string words;
  for (const auto* option : optionsOf(command)) {
    for (const auto& name : option->get_lnames()) words += (words.empty() ? "--" : " --") + name;
  }
  return words;
}

std::string commandNames(const CLI::App& program) {
  std::string names;
  for (const auto* command : partsOf(program, false)) {
    names += (names.empty() ? "" : " ") + command->get_name();
  }
  return names;
}

// One table of options for each command serves both shells.
std::string completion(const CLI::App& program, std::string_view head, std::string_view tail) {
  std::ostringstream out;
  out << head << "  local words\n  case \"$command\" in\n";
  for (const auto* command : partsOf(program, false)) {
    out << "    " << command->get_name() << ") words=\"" << longOptionsOf(*command) << "\" ;;\n";
  }
  out << "    *) words=\"" << commandNames(program) << ' ' << longOptionsOf(program) << "\" ;;\n"
      << "  esac\n"
      << tail;
  return out.str();
}

constexpr std::string_view kBashHead =
    "# Completion of vlm for bash.\n_vlm() {\n  local command=${COMP_WORDS[1]}\n"
    "  [[ $COMP_CWORD -gt 1 ]] || command=\n";
constexpr std::string_view kBashTail =
    "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n}\n"
    "complete -o default -F _vlm vlm\n";
constexpr std::string_view kZshHead =
    "#compdef vlm\n_vlm() {\n  local command=\n  (( CURRENT <= 2 )) || command=$words[2]\n";
constexpr std::string_view kZshTail = "  compadd -- ${=words}\n  _files\n}\n_vlm \"$@\"\n";

// How many letters have to be put in, left out or changed to make one word of the other.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, changed});
    }
  }
  return row.back();
}

}  // namespace

std::string describe(const CLI::App& program, const std::string& form) {
  if (form == "man") return manualPage(program);
  if (form == "bash") return completion(program, kBashHead, kBashTail);
  if (form == "zsh") return completion(program, kZshHead, kZshTail);
  throw Failure("there is no description in the form '" + form + "'");
}

std::string complaintAbout(const CLI::App& program, const std::string& word) {
  const auto commands = partsOf(program, false);
  const auto distanceTo = [&](const CLI::App* each) { return distance(word, each->get_name()); };
  const auto nearest = std::ranges::min_element(commands, {}, distanceTo);
  if (nearest == commands.end() || distanceTo(*nearest) == 0) return "";
  return "there is no command '" + word + "'; the nearest is '" + (*nearest)->get_name() + "'";
}

}  // namespace vlm::tools
