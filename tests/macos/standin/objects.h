#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace standin {

inline id object(const void* reference) {
  return static_cast<id>(const_cast<void*>(reference));
}

// What a class of the frameworks keeps, whose header declares no instance variables. Ends with
// forget(), which its dealloc calls.
template <class T>
struct States {
  std::mutex mutex;
  std::map<const void*, std::unique_ptr<T>> all;
  static States& shared() {
    static auto* const states = new States;
    return *states;
  }
};
template <class T>
T& state(id of) {
  auto& states = States<T>::shared();
  const std::lock_guard lock(states.mutex);
  auto& it = states.all[of];
  if (it == nullptr) it = std::make_unique<T>();
  return *it;
}
template <class T>
void forget(id of) {
  auto& states = States<T>::shared();
  std::unique_ptr<T> last;
  const std::lock_guard lock(states.mutex);
  if (const auto found = states.all.extract(of)) last = std::move(found.mapped());
}

// Ends the process, as AppKit may, when this is another thread than the main one.
void requireMainThread(const char* caller);
// Runs what the main queue holds.
void runMainQueue();

// Objects of the platform and of the stand-ins that live at this moment, by class.
std::map<std::string, int> objectsAlive();

}  // namespace standin

// An accessibility element: attributes by name, and whatever watches it.
@interface StandInElement : NSObject {
 @public
  NSMutableDictionary* attributes;
}
@end

// A point (1) or a size (2).
@interface StandInGeometry : NSObject {
 @public
  int type;
  double first, second;
}
@end
