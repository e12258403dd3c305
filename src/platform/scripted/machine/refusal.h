#pragma once

#include <initializer_list>
#include <string_view>

#include "platform/scripted/machine/machine.h"

namespace vlm::platform::scripted {

// Enters the operation into the journal and does the portable work, unless the script says
// otherwise.
template <class Work>
auto unlessRefused(std::string_view operation, std::initializer_list<CFValue> arguments, Work work)
    -> decltype(work()) {
  const auto fault = Machine::current().journal.enter(operation, arguments);
  if (fault.fails()) return fault.status;
  return fault.nothing ? 0 : work();
}

inline std::int64_t number(std::size_t value) {
  return static_cast<std::int64_t>(value);
}

}  // namespace vlm::platform::scripted
