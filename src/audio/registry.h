#pragma once

#include <memory>
#include <unordered_map>

#include "frame/handle.h"
#include "platform/mutex.h"

namespace vlm::audio {

// Guards both registries: that of the microphone captures and that of the playbacks.
platform::Mutex& audioLock();

// The live objects of one kind by their handles. Besides the reference that a handle owns, the
// registry holds a second one, so that a handle can be looked up without trusting it.
template <class T>
class Registry {
 public:
  // Made on first use, and never ended: a call may come while the process exits.
  static Registry& shared() {
    static auto* const registry = new Registry();
    return *registry;
  }

  void* add(std::shared_ptr<T> object) {
    const platform::MutexLock lock(audioLock());
    // First, since it may find no memory: then no handle has been given.
    entries_.emplace(object.get(), object);
    return T::give(std::move(object));
  }

  // Null for a handle that is not there.
  std::shared_ptr<T> find(void* handle) {
    const platform::MutexLock lock(audioLock());
    const auto entry = entries_.find(handle);
    return entry == entries_.end() ? nullptr : entry->second;
  }

  // Ends the handle. The object as long as the caller wants it; null for a handle that is not
  // there.
  std::shared_ptr<T> remove(void* handle) {
    const platform::MutexLock lock(audioLock());
    if (entries_.erase(handle) == 0) return nullptr;
    return T::takeBack(handle);
  }

 private:
  std::unordered_map<void*, std::shared_ptr<T>> entries_ VLM_GUARDED_BY(audioLock());
};

}  // namespace vlm::audio
