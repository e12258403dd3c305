#include "kernels/conversion_targets.h"

#ifdef VLM_TEST_HIGHWAY

#include <hwy/highway.h>

namespace vlm::test {

void forEachInstructionSet(const std::function<void(const std::string& name)>& check) {
  auto targets = hwy::SupportedAndGeneratedTargets();
  targets.push_back(HWY_STATIC_TARGET);
  for (const auto target : targets) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    check(hwy::TargetName(target));
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().DeInit();
}

}  // namespace vlm::test

#else

namespace vlm::test {

void forEachInstructionSet(const std::function<void(const std::string& name)>& check) {
  check("plain");
}

}  // namespace vlm::test

#endif
