#include "frame/log.h"

#include "frame/guard.h"
#include "platform/foundation.h"

namespace vlm::frame {

void logLine(std::initializer_list<std::string_view> parts) noexcept {
  guarded([&] {
    std::string line = "[vlm] ";
    for (const auto part : parts) line += part;
    platform::NSLog(line);
  });
}

}  // namespace vlm::frame
