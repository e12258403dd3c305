#include "support/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace vlm::test {
namespace {

constexpr auto kPatience = std::chrono::seconds(3);

std::vector<char*> argumentsOf(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  return arguments;
}

// Forks and executes; `output` becomes the child's standard output and error when it is not -1.
pid_t start(const std::vector<std::string>& command, int inherited, int output) {
  const auto arguments = argumentsOf(command);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid > 0) return pid;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(127);
  if (inherited >= 0) fcntl(inherited, F_SETFD, 0);
  if (output >= 0) {
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
  }
  execvp(arguments[0], arguments.data());
  _exit(127);
}

int outcome(int status) {
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, int inherited)
    : pid_(start(command, inherited, -1)) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : pid_(std::exchange(other.pid_, -1)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(pid_, other.pid_);
  return *this;
}

void ChildProcess::signal(int number) const {
  if (pid_ > 0) kill(pid_, number);
}

int ChildProcess::wait() {
  int status = 0;
  if (pid_ > 0) waitpid(std::exchange(pid_, -1), &status, 0);
  return outcome(status);
}

void ChildProcess::end(int number) {
  if (pid_ <= 0) return;
  signal(number);
  const bool gone = eventually([this] { return waitpid(pid_, nullptr, WNOHANG) != 0; }, kPatience);
  if (!gone) {
    signal(SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  pid_ = -1;
}

CommandResult runCommand(const std::vector<std::string>& command) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
  const pid_t pid = start(command, -1, ends[1]);
  close(ends[1]);
  CommandResult result;
  std::array<char, 4096> piece;
  for (ssize_t got; (got = read(ends[0], piece.data(), piece.size())) > 0;) {
    result.output.append(piece.data(), static_cast<std::size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  result.status = outcome(status);
  return result;
}

std::string outputOf(const std::vector<std::string>& command) {
  auto result = runCommand(command);
  if (result.status != 0) throw std::runtime_error(command.front() + ": " + result.output);
  while (result.output.ends_with('\n')) result.output.pop_back();
  return result.output;
}

std::size_t timesIn(const std::string& text, const std::string& part) {
  std::size_t times = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++times;
  return times;
}

}  // namespace vlm::test
