#include "platform/app_kit.h"
#include "platform/application_services.h"
#include "platform/core_graphics.h"
#include "platform/scripted/machine.h"

namespace vlm::platform {
namespace {

// Notes the question and gives the stage to answer from.
scripted::SystemStage& ask(std::string_view operation,
                           std::initializer_list<CFValue> arguments = {}) {
  scripted::Machine::current().journal.enter(operation, arguments);
  return scripted::Machine::current().system;
}

}  // namespace

bool CGPreflightScreenCaptureAccess() {
  return ask("CGPreflightScreenCaptureAccess").mayRecordScreen;
}

bool CGRequestScreenCaptureAccess() {
  return ask("CGRequestScreenCaptureAccess").grantsScreenOnRequest;
}

bool AXIsProcessTrusted() {
  return ask("AXIsProcessTrusted").isTrusted;
}

bool AXIsProcessTrustedWithOptions(const CFValue& options) {
  const auto& stage = ask("AXIsProcessTrustedWithOptions", {options});
  return stage.isTrusted || stage.grantsTrustOnPrompt;
}

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  const auto fault = scripted::Machine::current().journal.enter("NSURL", {text});
  return fault.nothing ? std::nullopt : std::optional(NSURL{std::string(text)});
}

bool NSWorkspace::openURL(const NSURL& url) {
  return ask("NSWorkspace openURL", {url.absoluteString}).opensUrls;
}

}  // namespace vlm::platform
