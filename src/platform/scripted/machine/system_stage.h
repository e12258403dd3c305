#pragma once

#include <map>
#include <string>
#include <utility>

#include "platform/cf_value.h"

namespace vlm::platform::scripted {

// The keychain, the machine's identity and what its user allows.
struct SystemStage {
  // By service and account. Usually bytes; a test may put in anything.
  std::map<std::pair<std::string, std::string>, CFValue> keychain;
  bool hasRegistryRoot = true;
  CFValue platformUuid = "00000000-1111-2222-3333-444444444444";
  bool mayRecordScreen = false;
  bool grantsScreenOnRequest = false;
  bool isTrusted = false;
  bool grantsTrustOnPrompt = false;
  bool opensUrls = true;
};

}  // namespace vlm::platform::scripted
