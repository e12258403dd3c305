#pragma once

#import <AVFAudio/AVFAudio.h>
#import <AudioToolbox/AudioToolbox.h>

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "platform/avf_audio.h"
#include "platform/macos/bridge/objc.h"
#include "platform/mutex.h"
#include "platform/running_call.h"

namespace vlm::platform::bridge {

// The audio unit of an input or output node; null units are kept out by the node.
class Unit : public AudioUnit {
 public:
  explicit Unit(::AudioUnit unit) : unit_(unit) {}
  OSStatus setProperty(std::uint32_t property, std::uint32_t scope, std::uint32_t element,
                       std::uint32_t value) override {
    return ::AudioUnitSetProperty(unit_, property, scope, element, &value, sizeof value);
  }

 private:
  const ::AudioUnit unit_;
};

// What the library's two nodes have in common. The framework makes them when they are first asked
// for, so that an engine that only plays asks for no microphone.
class IoNode {
 public:
  explicit IoNode(Objc<AVAudioIONode> node) : node_(std::move(node)) {}
  AudioUnit* unit();
  AVAudioIONode* native() const { return node_.get(); }

 private:
  const Objc<AVAudioIONode> node_;
  std::optional<Unit> unit_;
};

// One tap's block, which is not called any more once it is closed.
class Tap {
 public:
  explicit Tap(AVAudioNodeTapBlock block) : block_(std::move(block)) {}
  void deliver(const std::shared_ptr<AVAudioPCMBuffer>& buffer);
  // Waits for a running call, unless it is called from that.
  void close();

 private:
  const AVAudioNodeTapBlock block_;
  RunningCall running_;
  Mutex calling_;
  std::atomic<bool> closed_ = false;
};

class InputNode : public AVAudioInputNode {
 public:
  explicit InputNode(Objc<AVAudioIONode> node) : node_(std::move(node)) {}
  AudioUnit* audioUnit() override { return node_.unit(); }
  AVAudioFormatPtr inputFormatForBus(std::uint32_t bus) override;
  std::optional<NSError> installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                         AVAudioFormatPtr format,
                                         AVAudioNodeTapBlock block) override;
  void removeTapOnBus(std::uint32_t bus) override;

 private:
  IoNode node_;
  std::map<std::uint32_t, std::shared_ptr<Tap>> taps_;
};

class OutputNode : public AVAudioOutputNode {
 public:
  explicit OutputNode(Objc<AVAudioIONode> node) : node_(std::move(node)) {}
  AudioUnit* audioUnit() override { return node_.unit(); }

 private:
  IoNode node_;
};

class SourceNode : public AVAudioSourceNode {
 public:
  explicit SourceNode(Objc<::AVAudioSourceNode> node) : node_(std::move(node)) {}
  ::AVAudioSourceNode* native() const { return node_.get(); }

 private:
  const Objc<::AVAudioSourceNode> node_;
};

// Null when the framework makes none.
std::shared_ptr<SourceNode> makeSourceNode(const AVAudioFormatPtr& format,
                                           AVAudioSourceNodeRenderBlock block);

}  // namespace vlm::platform::bridge
