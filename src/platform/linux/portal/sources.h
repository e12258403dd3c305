#pragma once

#include <string>

#include "platform/linux/portal/desktop_portal.h"

namespace vlm::platform::portal {

inline constexpr std::uint32_t kMonitors = 1;

// Whether the desktop shares monitors. A portal answers with its version even where no desktop
// serves it; what it can share is the truth.
inline bool offersMonitors(const DesktopPortal& portal) {
  return (portal.property(kScreenCast, "AvailableSourceTypes") & kMonitors) != 0;
}

// Whole monitors, one or several, without the pointer.
inline void selectMonitors(Options& options, bool several) {
  constexpr std::uint32_t kHiddenPointer = 1;
  options.set("types", kMonitors).set("cursor_mode", kHiddenPointer);
  options.set("multiple", g_variant_new_boolean(several ? TRUE : FALSE));
}

// What a person agrees to holds until they take it back; what they agreed to before is taken up.
inline void remember(Options& options, const std::string& token) {
  constexpr std::uint32_t kUntilRevoked = 2;
  options.set("persist_mode", kUntilRevoked);
  if (!token.empty()) options.set("restore_token", token);
}

}  // namespace vlm::platform::portal
