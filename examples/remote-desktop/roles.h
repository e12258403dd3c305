// What main() starts.
#pragma once

#include "pictures.h"
#include "target.h"

namespace remote {

struct ShareOptions {
  std::string address = "127.0.0.1:0";
  Target::Choice target;
  Pictures::Options pictures;
  bool control = true;  // pointer, keyboard and clipboard
};
int share(const ShareOptions& options);

int view(const Invitation& invitation, bool fullScreen);

// Iterates the main loop until SIGINT, SIGTERM or endLoop().
void runUntilSignal();
void endLoop();

}  // namespace remote
