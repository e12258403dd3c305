#pragma once

namespace vlm::platform::x11 {

// X11 grants every client all that its server offers. So a right is there when the display can be
// reached and has the extensions that the work needs, in the versions that it needs. Any thread.
bool mayCaptureScreen();
bool mayPostInput();

}  // namespace vlm::platform::x11
