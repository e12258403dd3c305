#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/application_services.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/window_list.h"
#include "platform/mutex.h"
#include "platform/portable/object.h"

namespace vlm::platform::accessibility {

// The value of an attribute. Nothing where the attribute exists and has no value.
using Value = std::variant<std::monostate, bool, CGPoint, CGSize, std::string, x11::Window,
                           std::vector<x11::Window>>;

// An application (no window) or one of its windows.
class Element : public Object {
 public:
  explicit Element(std::int32_t pid) : processId(pid) {}
  // Keeps what a list has just said about the window, so that the first question about each
  // attribute needs no request; every later one asks the server.
  explicit Element(const x11::Window& window);

  const std::int32_t processId;
  const xcb_window_t window = XCB_NONE;

  // `value` is written on success only.
  AXError copyAttribute(std::string_view attribute, Value& value) VLM_EXCLUDES(mutex_);

 private:
  AXError copyOfApplication(const x11::Connection& connection, std::string_view attribute,
                            Value& value) VLM_EXCLUDES(mutex_);
  bool takeKnown(std::string_view attribute, Value& value) VLM_EXCLUDES(mutex_);

  Mutex mutex_;
  std::map<std::string, Value, std::less<>> known_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform::accessibility
