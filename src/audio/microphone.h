#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VelmoraMacNative.h"
#include "frame/handle.h"
#include "platform/avf_audio.h"

namespace vlm::audio {

// Records from one input device and delivers mono floats at 48 kHz, whatever the device gives.
class MicCapture final : public frame::HandleObject<MicCapture> {
 public:
  // Null when the device has no input format or the engine can't be started. `cb` is never null;
  // it is called on a thread of the engine.
  static std::shared_ptr<MicCapture> start(const std::optional<std::string>& deviceUid,
                                           vlm_mic_cb cb, void* user);

  MicCapture(vlm_mic_cb cb, void* user);

  // Nothing is delivered after this.
  void stop();

 private:
  bool startEngine(const std::optional<std::string>& deviceUid);
  void delivery(const std::shared_ptr<platform::AVAudioPCMBuffer>& tapped) const;

  const std::shared_ptr<platform::AVAudioEngine> engine_;
  const platform::AVAudioFormatPtr outFormat_;  // what the host gets
  // Null when there is no conversion from the device's format: then nothing is ever delivered.
  std::shared_ptr<platform::AVAudioConverter> converter_;
  const vlm_mic_cb cb_;
  void* const user_;
};

}  // namespace vlm::audio
