#pragma once

#include <optional>
#include <string>

// The rights that sharing a screen needs. Any thread; nothing is kept between calls.
namespace vlm::system {

// Whether the screen may be recorded; with `request`, the user is asked where it is not granted
// yet.
bool screenRecordingGranted(bool request);

// Whether other applications' windows and input may be watched and driven.
bool accessibilityGranted(bool prompt);

// Opens the system's settings at the page for "screen", "accessibility" or "microphone", at the
// general privacy page for anything else. False when nothing could be opened.
bool openPrivacySettings(const std::optional<std::string>& kind);

}  // namespace vlm::system
