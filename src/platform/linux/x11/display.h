#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/connection.h"
#include "platform/mutex.h"

namespace vlm::platform::x11 {

// The process's one connection for short questions and posted events, from any thread. It is made
// on first use, and anew after the server was lost or DISPLAY has come to name another.
class Display {
 public:
  static Display& shared();

  // Runs `work` with the connection, one thread at a time; `otherwise` when there is no server.
  // Work that asks for it also gets the number of the connection: what was learnt over an
  // earlier one is worth nothing over a later one.
  template <class Result, class Work>
  Result with(Result otherwise, Work&& work) VLM_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    const BrokenPipeGuard guard;
    const auto* connection = ready();
    if (connection == nullptr) return otherwise;
    if constexpr (std::is_invocable_v<Work, const Connection&, unsigned>) {
      return std::forward<Work>(work)(*connection, generation_);
    } else {
      return std::forward<Work>(work)(*connection);
    }
  }

 private:
  const Connection* ready() VLM_REQUIRES(mutex_);

  Mutex mutex_;
  std::string name_ VLM_GUARDED_BY(mutex_);
  std::unique_ptr<Connection> connection_ VLM_GUARDED_BY(mutex_);
  unsigned generation_ VLM_GUARDED_BY(mutex_) = 0;
};

}  // namespace vlm::platform::x11
