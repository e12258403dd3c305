// A small remote desktop: `share` shows this screen, `view` shows another's.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "roles.h"

namespace remote {
namespace {

bool isRunning = true;

void addShare(CLI::App& program, ShareOptions& options, int& status) {
  auto& role = *program.add_subcommand("share", "Prints an invitation and waits for a viewer");
  auto& target = options.target;
  auto& pictures = options.pictures;
  role.add_option("--listen", options.address, "HOST:PORT, for other computers");
  auto& what = *role.add_option_group("What is shared")->require_option(0, 1);
  what.add_option("--display", target.display, "A display, as xrandr --listmonitors names it");
  what.add_option("--window", target.window, "A window")->check(CLI::PositiveNumber);
  what.add_option("--app", target.application, "The windows of an application");
  role.add_flag("!--no-control", options.control, "The viewer may only look");
  role.add_flag("!--no-sound", pictures.sound, "Nothing is heard");
  role.add_option("--fps", pictures.fps, "Pictures a second")->check(CLI::Range(5, 120));
  role.add_option("--mbit", pictures.mostMegabits, "At most so many Mbit/s")
      ->check(CLI::Range(1, 200));
  role.callback([&] {
    // Who shares one window has not chosen to share what else can be reached, copied or heard.
    const bool isWhole = target.window == 0 && target.application.empty();
    options.control = isWhole && options.control;
    pictures.sound = isWhole && pictures.sound;
    status = share(options);
  });
}

void addView(CLI::App& program, int& status) {
  auto& role = *program.add_subcommand("view", "Shows what an invitation leads to");
  role.add_flag("--full-screen");
  role.add_option("invitation")->required()->description("- is read from standard input");
  role.callback([&] {
    auto text = role["invitation"]->as<std::string>();
    // Programs of others can read the words of a command, and the token with them.
    if (text == "-") std::getline(std::cin, text);
    status = view(Invitation::parse(text), role.count("--full-screen") > 0);
  });
}

}  // namespace

void endLoop() {
  isRunning = false;
}

void runUntilSignal() {
  const auto end = [](gpointer) -> gboolean {
    endLoop();
    return G_SOURCE_CONTINUE;
  };
  for (const int signal : {SIGINT, SIGTERM}) g_unix_signal_add(signal, end, nullptr);
  while (isRunning) g_main_context_iteration(nullptr, TRUE);
}

}  // namespace remote

int main(int count, char** words) {
  remote::ShareOptions options;
  int status = 0;
  CLI::App program("A small remote desktop.");
  program.require_subcommand(1);
  remote::addShare(program, options, status);
  remote::addView(program, status);
  try {
    program.parse(count, words);
    return status;
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "remote: %s\n", error.what());
    return 1;
  }
}
