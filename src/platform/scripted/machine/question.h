#pragma once

#include <initializer_list>
#include <string_view>

#include "platform/scripted/machine/machine.h"

namespace vlm::platform::scripted {

// Notes the question and gives the stage to answer from.
inline SystemStage& ask(std::string_view operation, std::initializer_list<CFValue> arguments = {}) {
  Machine::current().journal.enter(operation, arguments);
  return Machine::current().system;
}

}  // namespace vlm::platform::scripted
