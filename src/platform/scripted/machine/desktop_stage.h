#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/app_kit.h"
#include "platform/application_services.h"
#include "platform/mutex.h"
#include "platform/portable/object.h"

namespace vlm::platform {

// Elements of the same name are equal.
class AXUIElement : public Object {
 public:
  explicit AXUIElement(std::string called, CFDictionary with = {})
      : name(std::move(called)), attributes(std::move(with)) {}

  const std::string name;
  CFDictionary attributes;  // not changed while others read
};

class CFRunLoopSource : public Object {
 public:
  std::atomic<bool> added = false;
};

class AXObserver : public Object {
 public:
  struct Shared {
    AXObserverCallback callback;
    Ref<CFRunLoopSource> source = makeRef<CFRunLoopSource>();
    Mutex mutex;
    std::set<std::string, std::less<>> names VLM_GUARDED_BY(mutex);
  };
  explicit AXObserver(AXObserverCallback callback) { shared->callback = std::move(callback); }

  const std::shared_ptr<Shared> shared = std::make_shared<Shared>();
};

namespace scripted {

class ScriptedMonitor final : public NSEventMonitor {
 public:
  ScriptedMonitor(bool isLocal, std::function<const NSEvent*(const NSEvent&)> whenPressed)
      : local(isLocal), handler(std::move(whenPressed)) {}

  const bool local;
  const std::function<const NSEvent*(const NSEvent&)> handler;
};

// Applications and their windows, as the workspace, the window server and the accessibility
// interface list them; key presses.
class DesktopStage {
 public:
  std::vector<NSRunningApplication> running;
  std::optional<NSRunningApplication> frontmost;
  // Whatever a test puts in, wrong types included; nothing for a list that can't be had.
  std::optional<CFArray> windowList = CFArray{};
  // Attributes by process; a process that is missing has an element without any.
  std::map<std::int32_t, CFDictionary> applications;
  CGPoint pointer;

  // Notifies every observer that asked for it, a little later on the main thread, while its source
  // is added there.
  void notify(const std::string& name) VLM_EXCLUDES(mutex_);
  // A key press, on the main thread a little later. Answers, then, how many monitors let it pass.
  void press(std::uint16_t keyCode, bool local);
  int passed = 0;

  void add(const std::shared_ptr<AXObserver::Shared>& observer) VLM_EXCLUDES(mutex_);
  // Monitors are the main thread's.
  std::vector<std::shared_ptr<ScriptedMonitor>> monitors;

 private:
  Mutex mutex_;
  std::vector<std::weak_ptr<AXObserver::Shared>> observers_ VLM_GUARDED_BY(mutex_);
};

}  // namespace scripted
}  // namespace vlm::platform
