#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "platform/avf_audio.h"
#include "platform/linux/pulse/connection.h"
#include "platform/linux/pulse/devices.h"
#include "platform/linux/pulse/recording.h"
#include "platform/linux/pulse/repeating_timer.h"

namespace vlm::platform::pulse {

// The choice of a device for one direction.
class DeviceChoice final : public AudioUnit {
 public:
  explicit DeviceChoice(bool isInput) : isInput_(isInput) {}
  OSStatus setProperty(std::uint32_t property, std::uint32_t scope, std::uint32_t element,
                       std::uint32_t value) override;

  // Nothing means the server's default, and whatever becomes that later.
  const std::optional<Device>& device() const { return device_; }

 private:
  const bool isInput_;
  std::optional<Device> device_;
};

class InputNode final : public AVAudioInputNode {
 public:
  AudioUnit* audioUnit() override { return &choice_; }
  AVAudioFormatPtr inputFormatForBus(std::uint32_t bus) override;
  std::optional<NSError> installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                         AVAudioFormatPtr format,
                                         AVAudioNodeTapBlock block) override;
  void removeTapOnBus(std::uint32_t bus) override;

  // For the engine. Without a tap there is nothing to run.
  bool isWanted() const { return tap_.block != nullptr; }
  bool start(Connection& connection);
  void stop();

 private:
  DeviceChoice choice_{true};
  std::optional<Device> default_;  // the one whose format was reported last
  Tap tap_;
  std::shared_ptr<Recording> recording_;
};

class SourceNode final : public AVAudioSourceNode {
 public:
  SourceNode(AVAudioFormatPtr nodeFormat, AVAudioSourceNodeRenderBlock nodeBlock)
      : format(std::move(nodeFormat)), block(std::move(nodeBlock)) {}
  const AVAudioFormatPtr format;
  const AVAudioSourceNodeRenderBlock block;
};

// Plays what the source node renders, whenever the server wants more. While it wants nothing,
// because it or the device is gone or hangs, the source is rendered into nothing at the pace of the
// clock: what is heard after that is of that time, and is not late for the rest of the playback.
class OutputNode final : public AVAudioOutputNode {
 public:
  AudioUnit* audioUnit() override { return &choice_; }

  void setSource(std::shared_ptr<SourceNode> source) { source_ = std::move(source); }
  bool isWanted() const { return source_ != nullptr; }
  bool start(Connection& connection);
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  static void onWritable(pa_stream* stream, std::size_t bytes, void* self);
  void begin();
  void keepUp();
  void renderIntoNothing();
  bool renderInto(pa_stream* stream, std::size_t& bytes);
  void render(std::uint32_t frames);

  DeviceChoice choice_{false};
  std::shared_ptr<SourceNode> source_;
  // One piece of each channel, made before the thread that renders begins.
  std::vector<std::vector<float>> planes_;
  std::vector<AudioBuffer> list_;
  Connection* connection_ = nullptr;
  // Under the connection's lock.
  Stream stream_;
  bool isAsked_ = false;        // the stream has been asked for samples
  Clock::time_point rendered_;  // when something was rendered last
  std::optional<RepeatingTimer> timer_;
};

}  // namespace vlm::platform::pulse
