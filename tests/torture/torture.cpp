// Services end at random moments of a busy session, round after round: nothing crashes, hangs, or
// stays behind, and the next session is whole again.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>

#include "e2e/desktop.h"
#include "torture/session.h"

extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace vlm::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

struct Options {
  double minutes = 1;
  int rounds = -1;
  unsigned seed = std::random_device{}();
};

Options optionsIn(int count, char** words) {
  Options options;
  for (int i = 1; i + 1 < count; i += 2) {
    const std::string name = words[i];
    if (name == "--minutes") options.minutes = std::stod(words[i + 1]);
    if (name == "--rounds") options.rounds = std::stoi(words[i + 1]);
    if (name == "--seed") options.seed = static_cast<unsigned>(std::stoul(words[i + 1]));
  }
  return options;
}

// What the process holds.
struct Holdings {
  std::size_t heap, threads, files;

  static Holdings now() {
    const auto entriesIn = [](const char* folder) {
      const std::filesystem::directory_iterator entries(folder);
      return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    };
    const auto heap = __sanitizer_get_current_allocated_bytes != nullptr
                          ? __sanitizer_get_current_allocated_bytes()
                          : mallinfo2().uordblks;
    return {heap, entriesIn("/proc/self/task"), entriesIn("/proc/self/fd")};
  }
  std::string text() const {
    return std::to_string(heap / 1024) + " KiB of heap, " + std::to_string(threads) + " threads, " +
           std::to_string(files) + " files";
  }
  // GLib keeps some idle threads for a while; a lost one of each round is more.
  bool isMoreThan(const Holdings& before) const {
    constexpr std::size_t kSpare = 4, kSpareHeap = 16 << 20;
    return heap > before.heap + kSpareHeap || threads > before.threads + kSpare ||
           files > before.files + kSpare;
  }
};

class Torture {
 public:
  explicit Torture(unsigned seed) : random_(seed) {}

  void round() {
    constexpr const char* kMoments[] = {"starts", "runs", "goes on", "ends"};
    const int moment = pick(4);
    const auto faults = plan(kMoments[moment]);
    std::optional<Services::Faults> underway;
    const auto begin = [&](bool isNow) {
      if (isNow) underway.emplace(services_, faults);
    };
    begin(moment == 0);
    auto session = std::make_unique<Session>(services_, calls_);
    if (moment != 0) requireWhole(*session);
    begin(moment == 1 || moment == 2);
    pump(milliseconds(pick(800)));
    if (moment == 2) {
      underway.reset();
      services_.restore(faults);
      requireRecovery(*session, faults);
    }
    begin(moment == 3);
    const auto start = std::chrono::steady_clock::now();
    session.reset();
    if (std::chrono::steady_clock::now() - start > 20s) fail("the end of the session took long");
    if (moment != 2) {
      underway.reset();
      services_.restore(faults);
    }
    pump(20ms);
    ++rounds_;
    requireNothingLeft();
  }

  void report() {
    std::printf("torture: %d rounds, %d faults, %s\n", rounds_, faults_,
                Holdings::now().text().c_str());
    std::fflush(stdout);
  }
  void printSlow() { calls_.printSlow(); }
  int rounds() const { return rounds_; }

 private:
  int pick(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  // One service or several, ended by force, by request, or, where the library does not wait
  // without a limit, by silence.
  std::vector<Fault> plan(const char* moment) {
    std::vector<Fault> faults;
    const int count = pick(3) == 0 ? 2 + pick(2) : 1;
    for (int i = 0; i < count; ++i) {
      const auto service = static_cast<Service>(pick(std::size(kServiceNames)));
      const bool mayFallSilent = service == Service::sound || service == Service::keyring;
      const int way = pick(8);
      const int signal = way == 0 && mayFallSilent ? SIGSTOP : way < 4 ? SIGTERM : SIGKILL;
      faults.push_back({service, signal, milliseconds(pick(i == 0 ? 600 : 150))});
    }
    faults_ += count;
    last_ = "";
    for (const auto& fault : faults) {
      last_ += std::string(" ") + kServiceNames[static_cast<int>(fault.service)] + " by " +
               strsignal(fault.signal) + " after " + std::to_string(fault.after.count()) + " ms;";
    }
    last_ += std::string(" while it ") + moment + ";";
    std::printf("round %d:%s\n", rounds_, last_.c_str());
    std::fflush(stdout);
    return faults;
  }

  [[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error("round " + std::to_string(rounds_) + "," + last_ + " " + what);
  }

  template <class Condition>
  bool pumpWhile(Condition condition, milliseconds limit) {
    return eventually(
        [&] {
          runMainLoop();
          return !condition();
        },
        limit);
  }
  void pump(milliseconds time) {
    pumpWhile([] { return true; }, time);
  }

  void requireWhole(const Session& session) {
    const bool isWhole = pumpWhile(
        [&] {
          runCommand({"xdotool", "key", "F7"});
          return !session.missing().empty();
        },
        30s);
    if (!isWhole) {
      fail("before this the session lacks " + session.missing() + "\n" +
           runCommand({"xwininfo", "-root", "-tree"}).output);
    }
  }

  // What plays and records finds a sound server that is back.
  void requireRecovery(const Session& session, const std::vector<Fault>& faults) {
    const int before = session.heard();
    const bool isLost = std::ranges::any_of(
        faults, [](const Fault& fault) { return fault.service == Service::sound; });
    if (isLost && !pumpWhile([&] { return session.heard() < before + 5; }, 20s)) {
      fail("the microphone stays dead");
    }
    pump(milliseconds(pick(500)));
  }

  void requireNothingLeft() {
    if (Session::sawWrongSecret()) fail("a secret was not what was stored");
    constexpr int kWarm = 4;
    if (rounds_ < kWarm) return;
    if (rounds_ == kWarm) before_ = Holdings::now();
    const auto isMore = [&] { return Holdings::now().isMoreThan(before_); };
    if (!pumpWhile(isMore, 20s)) {
      fail("left: " + Holdings::now().text() + ", before " + before_.text());
    }
  }

  std::mt19937 random_;
  Services services_;
  BoundedCalls calls_;
  Holdings before_{};
  int rounds_ = 0, faults_ = 0;
  std::string last_;
};

int run(const Options& options) {
  std::printf("torture: --seed %u\n", options.seed);
  std::fflush(stdout);
  Torture torture(options.seed);
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration<double, std::ratio<60>>(options.minutes);
  const auto isOver = [&] {
    return options.rounds < 0 ? std::chrono::steady_clock::now() >= end
                              : torture.rounds() >= options.rounds;
  };
  while (!isOver()) {
    torture.round();
    if (torture.rounds() % 10 == 0) torture.report();
  }
  torture.report();
  torture.printSlow();
  return 0;
}

}  // namespace
}  // namespace vlm::test

int main(int count, char** words) {
  try {
    return vlm::test::run(vlm::test::optionsIn(count, words));
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "torture: %s\n", failure.what());
    return 1;
  }
}
