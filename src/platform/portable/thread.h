#pragma once

#include <csignal>
#include <functional>
#include <thread>

namespace vlm::platform {

// Blocks the host's signals on the calling thread while it lives. A thread that is started
// meanwhile, also by another library, inherits that. Signals of faults, such as SIGSEGV, stay as
// they are: a host's crash handler must run on the thread that failed.
class HostSignalsBlocked {
 public:
  HostSignalsBlocked() noexcept;
  ~HostSignalsBlocked();
  HostSignalsBlocked(const HostSignalsBlocked&) = delete;
  HostSignalsBlocked& operator=(const HostSignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

// A thread of the library. It has a name, and the host's signals are blocked on it, so that a
// host's handler never runs on a thread that the host does not know. Its end is waited for, except
// on the thread itself: there it goes on to its end alone.
class Thread {
 public:
  Thread() = default;
  // Throws std::system_error when there is no thread to be had.
  Thread(const char* name, std::function<void()> work);
  Thread(Thread&& other) noexcept = default;
  Thread& operator=(Thread&& other) noexcept;
  ~Thread() { end(); }

  // A thread whose end is not waited for.
  static void startAlone(const char* name, std::function<void()> work);

 private:
  void end();

  std::thread thread_;
};

}  // namespace vlm::platform
