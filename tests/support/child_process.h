#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

namespace vlm::test {

// A program that runs beside the test and is ended by its process id when this goes; the kernel
// ends it when the test itself dies.
class ChildProcess {
 public:
  // Starts `command` (found through PATH). A descriptor in `inherited` stays open in the child
  // under its own number.
  explicit ChildProcess(const std::vector<std::string>& command, int inherited = -1);
  ~ChildProcess() { end(); }
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&& other) noexcept;

  pid_t pid() const { return pid_; }
  void signal(int number) const;
  // Waits for the child to end by itself; its exit status, or minus the signal that ended it.
  int wait();
  // Asks the child to end, insists after a while, and waits until it is gone.
  void end(int number = SIGTERM);

 private:
  pid_t pid_ = -1;
};

struct CommandResult {
  int status = -1;
  std::string output;  // standard output and error, as they came
};

// Runs a command to its end and collects what it printed.
CommandResult runCommand(const std::vector<std::string>& command);

// The output of a command that is expected to succeed, without the last line feed; throws else.
std::string outputOf(const std::vector<std::string>& command);

// How often a part occurs in a text.
std::size_t timesIn(const std::string& text, const std::string& part);

// Tries until `condition` holds; false when it does not within the limit.
template <class Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

}  // namespace vlm::test
