#pragma once

#include <glib.h>

#include <functional>

#include "platform/mutex.h"
#include "platform/portable/object.h"

namespace vlm::platform::glib {

// A file descriptor that the main loop watches while the source is added. `ready` runs on the main
// thread whenever there is something to read, and once more when it returns true, after others had
// their turn. A source can be added and taken away again and again; it is taken away when it goes.
class DescriptorSource : public platform::Object {
 public:
  DescriptorSource(int descriptor, std::function<bool()> ready)
      : descriptor_(descriptor), ready_(std::move(ready)) {}
  ~DescriptorSource() override { remove(); }

  void add() VLM_EXCLUDES(mutex_);
  void remove() VLM_EXCLUDES(mutex_);

 private:
  static gboolean dispatch(gint descriptor, GIOCondition condition, gpointer self);

  const int descriptor_;
  const std::function<bool()> ready_;
  Mutex mutex_;
  GSource* source_ VLM_GUARDED_BY(mutex_) = nullptr;
};

}  // namespace vlm::platform::glib
