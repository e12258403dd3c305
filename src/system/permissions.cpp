#include "system/permissions.h"

#include <string_view>

#include "platform/app_kit.h"
#include "platform/application_services.h"
#include "platform/core_graphics.h"

namespace vlm::system {
namespace {

std::string_view anchor(std::string_view kind) {
  if (kind == "screen") return "Privacy_ScreenCapture";
  if (kind == "accessibility") return "Privacy_Accessibility";
  if (kind == "microphone") return "Privacy_Microphone";
  return "Privacy";
}

}  // namespace

bool screenRecordingGranted(bool request) {
  if (platform::CGPreflightScreenCaptureAccess()) return true;
  return request && platform::CGRequestScreenCaptureAccess();
}

bool accessibilityGranted(bool prompt) {
  if (!prompt) return platform::AXIsProcessTrusted();
  return platform::AXIsProcessTrustedWithOptions(
      platform::CFDictionary{{std::string(platform::kAXTrustedCheckOptionPrompt), true}});
}

bool openPrivacySettings(const std::optional<std::string>& kind) {
  std::string link(platform::kPrivacySettingsURL);
  link += '?';
  link += anchor(kind.value_or(""));
  const auto url = platform::NSURL::URLWithString(link);
  return url && platform::NSWorkspace::openURL(*url);
}

}  // namespace vlm::system
