#include "bench/support/meter.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "bench/support/clock.h"

namespace vlm::bench {
namespace {

constexpr int kPatienceMs = 20'000;

std::vector<std::string> withDescriptor(std::vector<std::string> command, int descriptor) {
  for (auto& argument : command) {
    if (const auto at = argument.find("%fd"); at != std::string::npos) {
      argument.replace(at, 3, std::to_string(descriptor));
    }
  }
  return command;
}

bool readable(int descriptor, int milliseconds) {
  pollfd wanted{descriptor, POLLIN, 0};
  return poll(&wanted, 1, milliseconds) == 1;
}

// The number behind the last `key` in a report.
std::uint64_t valueOf(const std::string& report, const std::string& key) {
  const auto at = report.rfind(key);
  return at == std::string::npos ? 0 : std::strtoull(report.c_str() + at + key.size(), nullptr, 10);
}

}  // namespace

void answer(int socket, const DeliveredCount& count) {
  for (char question = 0; ::read(socket, &question, 1) == 1;) {
    const Delivered now = count.now();
    if (send(socket, &now, sizeof now, MSG_NOSIGNAL) != sizeof now) return;
  }
}

Metered::Sockets::Sockets() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::runtime_error("no socket pair");
  }
  ours = ends[0];
  childs = ends[1];
}

Metered::Sockets::~Sockets() {
  close(ours);
  if (childs >= 0) close(childs);
}

Metered::Metered(std::vector<std::string> command, Protocol protocol)
    : protocol_(protocol),
      child_(withDescriptor(std::move(command), sockets_.childs), sockets_.childs) {
  close(sockets_.childs);  // so that the end of the child is seen
  sockets_.childs = -1;
}

Metered::~Metered() = default;

Reading Metered::read() {
  Reading result;
  result.delivered = protocol_ == Protocol::answers ? ask() : nextReport();
  result.processor = processorTime(child_.pid());
  result.time = monotonicNow();
  return result;
}

Delivered Metered::ask() const {
  Delivered result;
  if (send(sockets_.ours, "?", 1, MSG_NOSIGNAL) != 1 || !readable(sockets_.ours, kPatienceMs) ||
      recv(sockets_.ours, &result, sizeof result, MSG_WAITALL) != sizeof result) {
    throw std::runtime_error("a measured program has ended");
  }
  return result;
}

// Reports that came earlier are passed over: the one that is waited for comes now.
Delivered Metered::nextReport() {
  std::array<char, 4096> piece;
  const auto take = [&] {
    const auto size = ::read(sockets_.ours, piece.data(), piece.size());
    if (size <= 0) throw std::runtime_error("a measured program has ended");
    unread_.append(piece.data(), static_cast<std::size_t>(size));
  };
  while (readable(sockets_.ours, 0)) take();
  unread_.clear();
  while (unread_.find("progress=") == std::string::npos) {
    if (!readable(sockets_.ours, kPatienceMs)) throw std::runtime_error("no progress is reported");
    take();
  }
  return {valueOf(unread_, "frame="), valueOf(unread_, "total_size=")};
}

}  // namespace vlm::bench
