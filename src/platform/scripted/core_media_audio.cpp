#include "platform/portable/fallible.h"
#include "platform/scripted/machine/refusal.h"

namespace vlm::platform {

using scripted::number;
using scripted::unlessRefused;

OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBuffer& sample,
                                                                 std::span<AudioBuffer> list,
                                                                 std::size_t& count,
                                                                 Ref<CMBlockBuffer>& block) {
  return unlessRefused("CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer",
                       {number(list.size())},
                       [&] { return portable::audioBufferList(sample, list, count, block); });
}

}  // namespace vlm::platform
