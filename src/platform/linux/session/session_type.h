#pragma once

namespace vlm::platform::session {

// True when the person's desktop is a Wayland one: WAYLAND_DISPLAY is set, unless VLM_SESSION_TYPE
// says "x11" or "wayland". Looked up at each call, as DISPLAY is. Any thread.
bool isWayland();

// True when the environment says so by force.
bool isForcedX11();

}  // namespace vlm::platform::session
