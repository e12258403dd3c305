#pragma once

#include <functional>
#include <string>

namespace vlm::test {

// Runs `check` once with each instruction set that this processor has and the conversion was
// compiled for, and once with none of them. Without vectors in the build only the latter.
void forEachInstructionSet(const std::function<void(const std::string& name)>& check);

}  // namespace vlm::test
