#pragma once

#include <cstdint>
#include <optional>

#include "x_connection.h"

namespace vlm::tools {

// Ends the loop when the window that is captured is closed (0: no window) or the X server is gone:
// the library only logs both, and no frame says so. A display that no X server shows, as in a
// Wayland session, is not watched.
class TargetWatch {
 public:
  TargetWatch(MainLoop& loop, std::uint32_t window);

 private:
  std::optional<XConnection> connection_;
};

}  // namespace vlm::tools
