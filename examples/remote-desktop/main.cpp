// A small remote desktop: `share` shows this screen, `view` shows another's.
#include <csignal>
#include <cstdio>
#include <iostream>

#include "roles.h"

namespace remote {
namespace {

constexpr const char* kUsage =
    "remote-desktop share [--listen HOST:PORT] [--display NAME | --window ID | --app PREFIX]\n"
    "                     [--no-control] [--no-sound] [--fps N] [--mbit N]\n"
    "remote-desktop view [--full-screen] INVITATION | -      (-: read from standard input)\n";

bool isRunning = true;

struct WrongUsage : std::runtime_error {
  using runtime_error::runtime_error;
};

class Arguments {
 public:
  Arguments(int count, char** words) : next_(words), end_(words + count) {}
  bool isEmpty() const { return next_ == end_; }
  std::string take() {
    if (isEmpty()) throw WrongUsage("a word is missing");
    return *next_++;
  }
  int takeNumber(int least, int most) {
    const auto word = take();
    char* end = nullptr;
    const auto number = std::strtol(word.c_str(), &end, 0);
    if (*end != 0 || number < least || number > most) throw WrongUsage("not here: " + word);
    return static_cast<int>(number);
  }

 private:
  char** next_;
  char** const end_;
};

int runShare(Arguments words) {
  ShareOptions options;
  auto& target = options.target;
  auto& pictures = options.pictures;
  bool mayControl = true, mayListen = true;
  while (!words.isEmpty()) {
    const auto word = words.take();
    if (word == "--listen")
      options.address = words.take();
    else if (word == "--display")
      target.display = words.take();
    else if (word == "--window")
      target.window = static_cast<u32>(words.takeNumber(1, INT32_MAX));
    else if (word == "--app")
      target.application = words.take();
    else if (word == "--no-control")
      mayControl = false;
    else if (word == "--no-sound")
      mayListen = false;
    else if (word == "--fps")
      pictures.fps = words.takeNumber(5, 120);
    else if (word == "--mbit")
      pictures.mostBitsPerSecond = 1'000'000 * words.takeNumber(1, 200);
    else
      throw WrongUsage("unknown: " + word);
  }
  // Who shares one window has not chosen to share what else can be reached, copied or heard.
  const bool isWhole = target.window == 0 && target.application.empty();
  options.control = isWhole && mayControl;
  pictures.sound = isWhole && mayListen;
  return share(options);
}

int runView(Arguments words) {
  auto word = words.take();
  const bool fullScreen = word == "--full-screen";
  if (fullScreen) word = words.take();
  if (!words.isEmpty()) throw WrongUsage("one invitation is enough");
  // Programs of others can read the words of a command, and the token with them.
  if (word == "-") std::getline(std::cin, word);
  return view(Invitation::parse(word), fullScreen);
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

int main(int count, char** words) try {
  using namespace remote;
  const std::string role = count > 1 ? words[1] : "";
  const Arguments rest(count > 2 ? count - 2 : 0, words + 2);
  if (role == "share") return runShare(rest);
  if (role == "view") return runView(rest);
  throw WrongUsage("say share or view");
} catch (const remote::WrongUsage& error) {
  std::fprintf(stderr, "remote: %s\n%s", error.what(), remote::kUsage);
  return 2;
} catch (const std::exception& error) {
  std::fprintf(stderr, "remote: %s\n", error.what());
  return 1;
}
