#pragma once

namespace vlm::platform::portal {

// What a Wayland session lets this process do. None but those that ask opens a dialog, and each
// answers within seconds even where the portal does not. Any thread.

// Whether the desktop shares its screen at all.
bool offersScreen();
// Whether it would without asking a person first.
bool mayCaptureScreen();
// Asks a person, unless they agreed before, waits for as long as they think about it, and answers
// whether they agree.
bool askToCaptureScreen();

}  // namespace vlm::platform::portal
