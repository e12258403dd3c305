#include "platform/portable/thread.h"

#include <pthread.h>

#include <algorithm>
#include <string>
#include <utility>

namespace vlm::platform {
namespace {

void nameThisThread(std::string name) {
#if defined(__APPLE__)
  pthread_setname_np(name.c_str());
#else
  name.resize(std::min<std::size_t>(name.size(), 15));  // the kernel takes no longer name
  pthread_setname_np(pthread_self(), name.c_str());
#endif
}

}  // namespace

HostSignalsBlocked::HostSignalsBlocked() noexcept {
  sigset_t blocked;
  sigfillset(&blocked);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
    sigdelset(&blocked, fault);
  }
  pthread_sigmask(SIG_BLOCK, &blocked, &before_);
}

HostSignalsBlocked::~HostSignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

Thread::Thread(const char* name, std::function<void()> work) {
  // From the thread's first instruction on: it inherits what its maker blocks.
  const HostSignalsBlocked blocked;
  thread_ = std::thread([itsName = std::string(name), work = std::move(work)] {
    nameThisThread(itsName);
    work();
  });
}

Thread& Thread::operator=(Thread&& other) noexcept {
  end();
  thread_ = std::move(other.thread_);
  return *this;
}

void Thread::startAlone(const char* name, std::function<void()> work) {
  Thread(name, std::move(work)).thread_.detach();
}

void Thread::end() {
  if (!thread_.joinable()) return;
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

}  // namespace vlm::platform
