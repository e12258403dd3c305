#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "platform/application_services.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/window_list.h"
#include "platform/mutex.h"
#include "platform/portable/object.h"

namespace vlm::platform {

// An application (no window) or one of its windows.
class AXUIElement : public Object {
 public:
  explicit AXUIElement(std::int32_t pid) : processId(pid) {}
  // With what a list has just told about the window, so that the first question about each
  // attribute needs no request of its own; every later one asks the server.
  explicit AXUIElement(const x11::Window& window);

  const std::int32_t processId;
  const xcb_window_t window = XCB_NONE;

  AXError copyAttribute(std::string_view attribute, CFValue& value) VLM_EXCLUDES(mutex_);

 private:
  AXError copyOfApplication(const x11::Connection& connection, std::string_view attribute,
                            CFValue& value) VLM_EXCLUDES(mutex_);
  bool takeKnown(std::string_view attribute, CFValue& value) VLM_EXCLUDES(mutex_);

  Mutex mutex_;
  std::map<std::string, CFValue, std::less<>> known_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform
