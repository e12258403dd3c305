#include "platform/avf_audio.h"

#include <algorithm>
#include <utility>

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {
namespace {

using scripted::Fault;
using scripted::Machine;
using scripted::ScriptedEngine;
using scripted::ScriptedPlayer;

Fault enter(std::string_view operation, std::initializer_list<CFValue> arguments = {}) {
  return Machine::current().journal.enter(operation, arguments);
}

std::optional<NSError> errorOf(const Fault& fault) {
  return fault.fails() ? std::optional(NSError{fault.error}) : std::nullopt;
}

class SourceNode final : public AVAudioSourceNode {
 public:
  explicit SourceNode(AVAudioSourceNodeRenderBlock given) : block(std::move(given)) {}
  const AVAudioSourceNodeRenderBlock block;
};

// As many frames as the rates ask for, each the mean of the channels at the nearest place.
class Converter final : public AVAudioConverter {
 public:
  explicit Converter(double ratio) : ratio_(ratio) {}

  std::optional<NSError> convertToBuffer(AVAudioPCMBuffer& output,
                                         const AVAudioConverterInputBlock& input) override {
    const auto fault = enter("convertToBuffer", {output.frameCapacity()});
    if (fault.fails()) return errorOf(fault);
    AVAudioConverterInputStatus status{};
    while (const auto piece = input(status)) convert(*piece, output, fault.nothing);
    Machine::current().journal.note("input " + std::to_string(static_cast<int>(status)));
    return std::nullopt;
  }

 private:
  void convert(AVAudioPCMBuffer& piece, AVAudioPCMBuffer& output, bool keepsAll) const {
    const auto channels = piece.format().channelCount();
    output.setFrameLength(keepsAll ? 0 : static_cast<std::uint32_t>(piece.frameLength() * ratio_));
    for (std::uint32_t i = 0; i < output.frameLength(); ++i) {
      float sum = 0;
      for (std::uint32_t channel = 0; channel < channels; ++channel) {
        sum += piece.floatChannelData(channel)[static_cast<std::size_t>(i / ratio_)];
      }
      output.floatChannelData(0)[i] = sum / static_cast<float>(channels);
    }
  }

  const double ratio_;
};

}  // namespace

std::shared_ptr<AVAudioConverter> AVAudioConverter::initFromFormat(AVAudioFormatPtr from,
                                                                   AVAudioFormatPtr to) {
  const auto fault =
      enter("AVAudioConverter initFromFormat", {scripted::describe(from), scripted::describe(to)});
  if (fault.nothing || !from || !to) return nullptr;
  return std::make_shared<Converter>(to->sampleRate() / from->sampleRate());
}

std::shared_ptr<AVAudioSourceNode> AVAudioSourceNode::initWithFormat(
    AVAudioFormatPtr format, AVAudioSourceNodeRenderBlock block) {
  if (enter("AVAudioSourceNode initWithFormat", {scripted::describe(format)}).nothing) {
    return nullptr;
  }
  return std::make_shared<SourceNode>(std::move(block));
}

std::shared_ptr<AVAudioEngine> AVAudioEngine::make() {
  auto engine = std::make_shared<ScriptedEngine>();
  Machine::current().audio.engines.push_back(engine);
  return engine;
}

std::shared_ptr<AVAudioPlayer> helpers::audioPlayerOfFile(std::string_view path) {
  enter("AVAudioPlayer initWithContentsOfURL", {path});
  auto& stage = Machine::current().audio;
  const auto file = stage.files.find(path);
  if (file == stage.files.end()) return nullptr;
  auto player = std::make_shared<ScriptedPlayer>(file->second);
  stage.players.push_back(player);
  return player;
}

namespace scripted {

std::string describe(const AVAudioFormatPtr& format) {
  if (!format) return "no format";
  return describe(CFValue(format->sampleRate())) + " x " + std::to_string(format->channelCount()) +
         (format->isInterleaved() ? " interleaved" : "");
}

ScriptedEngine::ScriptedEngine() : input_(*this) {
  enter("AVAudioEngine init");
}

OSStatus ScriptedEngine::Unit::setProperty(std::uint32_t property, std::uint32_t scope,
                                           std::uint32_t element, std::uint32_t value) {
  return enter("AudioUnitSetProperty", {name_, property, scope, element, value}).status;
}

AudioUnit* ScriptedEngine::Input::audioUnit() {
  return Machine::current().audio.hasUnits ? &unit_ : nullptr;
}

AVAudioFormatPtr ScriptedEngine::Input::inputFormatForBus(std::uint32_t bus) {
  if (enter("inputFormatForBus", {bus}).nothing) return nullptr;
  return makeAudioFormat(Machine::current().audio.inputFormat);
}

std::optional<NSError> ScriptedEngine::Input::installTapOnBus(std::uint32_t bus,
                                                              std::uint32_t bufferSize,
                                                              AVAudioFormatPtr format,
                                                              AVAudioNodeTapBlock block) {
  auto error = errorOf(enter("installTapOnBus", {bus, bufferSize, describe(format)}));
  const MutexLock lock(engine_.mutex_);
  if (!error) engine_.tap_ = std::move(block);
  return error;
}

void ScriptedEngine::Input::removeTapOnBus(std::uint32_t bus) {
  enter("removeTapOnBus", {bus});
  const MutexLock lock(engine_.mutex_);
  engine_.tap_ = nullptr;
}

AudioUnit* ScriptedEngine::Output::audioUnit() {
  return Machine::current().audio.hasUnits ? &unit_ : nullptr;
}

void ScriptedEngine::attachNode(std::shared_ptr<AVAudioSourceNode> node) {
  enter("attachNode");
  source_ = std::move(node);
}

std::optional<NSError> ScriptedEngine::connectToMainMixer(AVAudioSourceNode& node,
                                                          AVAudioFormatPtr format) {
  auto error = errorOf(enter("connect to mainMixerNode", {describe(format)}));
  const MutexLock lock(mutex_);
  if (!error) render_ = static_cast<SourceNode&>(node).block;
  return error;
}

void ScriptedEngine::prepare() {
  enter("AVAudioEngine prepare");
}

std::optional<NSError> ScriptedEngine::start() {
  auto error = errorOf(enter("AVAudioEngine start"));
  const MutexLock lock(mutex_);
  running_ = !error;
  return error;
}

void ScriptedEngine::stop() {
  enter("AVAudioEngine stop");
  const MutexLock lock(mutex_);
  running_ = false;
}

void ScriptedEngine::tap(const std::shared_ptr<AVAudioPCMBuffer>& buffer) {
  const MutexLock lock(mutex_);
  if (running_ && tap_) tap_(buffer);
}

bool ScriptedEngine::render(std::uint32_t frames, AudioBufferList buffers) {
  const MutexLock lock(mutex_);
  if (!running_ || !render_) return false;
  bool isSilence = false;
  return render_(isSilence, frames, buffers) == noErr && !isSilence;
}

AVAudioNodeTapBlock ScriptedEngine::tapBlock() {
  const MutexLock lock(mutex_);
  return tap_;
}

AVAudioSourceNodeRenderBlock ScriptedEngine::renderBlock() {
  const MutexLock lock(mutex_);
  return render_;
}

bool ScriptedPlayer::prepareToPlay() {
  return !enter("prepareToPlay").nothing;
}

bool ScriptedPlayer::play() {
  playing = !enter("play").nothing;
  return playing;
}

void ScriptedPlayer::stop() {
  enter("stop");
  playing = false;
}

void ScriptedPlayer::setVolume(float volume) {
  enter("setVolume", {double{volume}});
}

void ScriptedPlayer::setNumberOfLoops(std::int64_t loops) {
  enter("setNumberOfLoops", {loops});
}

void ScriptedPlayer::setCurrentTime(double seconds) {
  enter("setCurrentTime", {seconds});
  time = seconds;
}

}  // namespace scripted
}  // namespace vlm::platform
