// Core Audio's devices and AVFAudio: two devices, an engine whose taps and source nodes the test
// drives, a converter that mixes and picks the nearest frame.
#import <AVFAudio/AVFAudio.h>
#import <CoreAudio/CoreAudio.h>

#include <Block.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

#include "standin/objects.h"
#include "standin/stage.h"

using standin::forget;
using standin::stage;
using standin::state;

namespace {

struct FormatState {
  AVAudioCommonFormat kind;
  double rate;
  unsigned channels;
  bool interleaved;
};
struct BufferState {
  AVAudioFormat* format;
  unsigned capacity, length;
  std::vector<float> samples;
  std::vector<float*> channels;
};
struct ConverterState {
  AVAudioFormat *from, *to;
};
struct NodeState {
  AVAudioNodeTapBlock tap;
  AVAudioSourceNodeRenderBlock source;
};
struct EngineState {
  AVAudioInputNode* input;
  AVAudioOutputNode* output;
  AVAudioMixerNode* mixer;
  NSMutableArray* attached;
};

std::set<AVAudioNode*> nodes;

AVAudioPCMBuffer* soundOf(AVAudioFormat* format, unsigned frames, float level) {
  AVAudioPCMBuffer* const buffer =
      [[[AVAudioPCMBuffer alloc] initWithPCMFormat:format frameCapacity:frames] autorelease];
  [buffer setFrameLength:frames];
  std::ranges::fill(state<BufferState>(buffer).samples, level);
  return buffer;
}

template <class Node>
Node* once(Node*& node) {
  if (node == nil) node = [[Node alloc] init];
  return node;
}

}  // namespace

@implementation AVAudioFormat
- (instancetype)initWithCommonFormat:(AVAudioCommonFormat)format
                          sampleRate:(double)rate
                            channels:(AVAudioChannelCount)channels
                         interleaved:(BOOL)interleaved {
  if (channels > 2) {  // a layout is missing
    [self release];
    return nil;
  }
  state<FormatState>(self) = {format, rate, channels, interleaved != 0};
  return self;
}
- (AVAudioCommonFormat)commonFormat { return state<FormatState>(self).kind; }
- (double)sampleRate { return state<FormatState>(self).rate; }
- (AVAudioChannelCount)channelCount { return state<FormatState>(self).channels; }
- (BOOL)isInterleaved { return state<FormatState>(self).interleaved; }
- (void)dealloc {
  forget<FormatState>(self);
  [super dealloc];
}
@end
@implementation AVAudioBuffer
- (AVAudioFormat*)format { return state<BufferState>(self).format; }
@end
@implementation AVAudioPCMBuffer
- (instancetype)initWithPCMFormat:(AVAudioFormat*)format frameCapacity:(AVAudioFrameCount)frames {
  auto& it = state<BufferState>(self);
  const unsigned count = [format channelCount];
  it = {[format retain], frames, 0, std::vector<float>(std::size_t{frames} * count), {}};
  for (unsigned i = 0; i < count; ++i) {
    it.channels.push_back(it.samples.data() + ([format isInterleaved] ? i : std::size_t{i} * frames));
  }
  return self;
}
- (AVAudioFrameCount)frameCapacity { return state<BufferState>(self).capacity; }
- (AVAudioFrameCount)frameLength { return state<BufferState>(self).length; }
- (void)setFrameLength:(AVAudioFrameCount)frames {
  auto& it = state<BufferState>(self);
  if (frames > it.capacity) [NSException raise:@"StandIn" format:@"too long"];
  it.length = frames;
}
- (float* const*)floatChannelData { return state<BufferState>(self).channels.data(); }
- (void)dealloc {
  [state<BufferState>(self).format release];
  forget<BufferState>(self);
  [super dealloc];
}
@end
@implementation AVAudioConverter
- (instancetype)initFromFormat:(AVAudioFormat*)from toFormat:(AVAudioFormat*)to {
  state<ConverterState>(self) = {[from retain], [to retain]};
  return self;
}
- (void)dealloc {
  [state<ConverterState>(self).from release];
  [state<ConverterState>(self).to release];
  forget<ConverterState>(self);
  [super dealloc];
}
- (AVAudioConverterOutputStatus)convertToBuffer:(AVAudioBuffer*)output
                                          error:(NSError**)error
                             withInputFromBlock:(AVAudioConverterInputBlock)block {
  if (stage().throws) [NSException raise:@"StandIn" format:@"no sound today"];
  auto* const to = static_cast<AVAudioPCMBuffer*>(output);
  auto& made = state<BufferState>(to);
  made.length = 0;
  const double step = [state<ConverterState>(self).from sampleRate] / [made.format sampleRate];
  AVAudioConverterInputStatus status = AVAudioConverterInputStatus_HaveData;
  while (auto* const piece = static_cast<AVAudioPCMBuffer*>(block(512, &status))) {
    const auto& in = state<BufferState>(piece);
    const std::size_t stride = [in.format isInterleaved] ? in.channels.size() : 1;
    for (double at = 0; at < in.length && made.length < made.capacity; at += step) {
      float sum = 0;
      for (const float* channel : in.channels) sum += channel[static_cast<std::size_t>(at) * stride];
      made.samples[made.length++] = sum / static_cast<float>(in.channels.size());
    }
  }
  return status == AVAudioConverterInputStatus_NoDataNow ? AVAudioConverterOutputStatus_InputRanDry
                                                         : AVAudioConverterOutputStatus_HaveData;
}
@end
@implementation AVAudioNode
- (AVAudioFormat*)inputFormatForBus:(AVAudioNodeBus)bus {
  return [[[AVAudioFormat alloc] initWithCommonFormat:AVAudioPCMFormatFloat32
                                           sampleRate:stage().inputRate
                                             channels:stage().inputChannels
                                          interleaved:NO] autorelease];
}
- (void)installTapOnBus:(AVAudioNodeBus)bus
             bufferSize:(AVAudioFrameCount)size
                 format:(AVAudioFormat*)format
                  block:(AVAudioNodeTapBlock)block {
  if (state<NodeState>(self).tap != nil) [NSException raise:@"StandIn" format:@"tapped already"];
  state<NodeState>(self).tap = Block_copy(block);
  nodes.insert(self);
}
- (void)removeTapOnBus:(AVAudioNodeBus)bus {
  Block_release(std::exchange(state<NodeState>(self).tap, nil));
}
- (void)dealloc {
  nodes.erase(self);
  Block_release(state<NodeState>(self).tap);
  Block_release(state<NodeState>(self).source);
  forget<NodeState>(self);
  [super dealloc];
}
@end
@implementation AVAudioIONode
- (AudioUnit)audioUnit { return reinterpret_cast<AudioUnit>(self); }
@end
@implementation AVAudioInputNode
@end
@implementation AVAudioOutputNode
@end
@implementation AVAudioMixerNode
@end
@implementation AVAudioTime
@end
@implementation AVAudioSourceNode
- (instancetype)initWithFormat:(AVAudioFormat*)format
                   renderBlock:(AVAudioSourceNodeRenderBlock)block {
  state<NodeState>(self).source = Block_copy(block);
  nodes.insert(self);
  return self;
}
@end
@implementation AVAudioEngine
- (AVAudioInputNode*)inputNode { return once(state<EngineState>(self).input); }
- (AVAudioOutputNode*)outputNode { return once(state<EngineState>(self).output); }
- (AVAudioMixerNode*)mainMixerNode { return once(state<EngineState>(self).mixer); }
- (void)attachNode:(AVAudioNode*)node { [once(state<EngineState>(self).attached) addObject:node]; }
- (void)connect:(AVAudioNode*)from to:(AVAudioNode*)to format:(AVAudioFormat*)format {
  if (stage().throws) [NSException raise:@"StandIn" format:@"no such format"];
}
- (void)prepare {}
- (BOOL)startAndReturnError:(NSError**)error {
  if (!stage().refusesOutputs) return YES;
  *error = [NSError errorWithDomain:@"stand-in" code:3 userInfo:nil];
  return NO;
}
- (void)stop {}
- (void)dealloc {
  const auto it = state<EngineState>(self);
  for (id each : {(id)it.input, (id)it.output, (id)it.mixer, (id)it.attached}) [each release];
  forget<EngineState>(self);
  [super dealloc];
}
@end
@implementation AVAudioPlayer
- (instancetype)initWithContentsOfURL:(NSURL*)url error:(NSError**)error {
  if ([[NSFileManager defaultManager] fileExistsAtPath:[url path]]) return self;
  [self release];
  return nil;
}
- (BOOL)prepareToPlay { return YES; }
- (BOOL)play { return YES; }
- (void)stop {}
- (void)setVolume:(float)volume {}
- (void)setNumberOfLoops:(NSInteger)loops {}
- (NSTimeInterval)currentTime { return 0; }
- (void)setCurrentTime:(NSTimeInterval)seconds {}
- (NSTimeInterval)duration { return 1.5; }
- (BOOL)isPlaying { return NO; }
@end

namespace standin {

void tap(unsigned frames, float level) {
  for (AVAudioNode* node : nodes) {
    const auto block = state<NodeState>(node).tap;
    if (block != nil) block(soundOf([node inputFormatForBus:0], frames, level), nil);
  }
}

std::vector<float> render(unsigned frames, unsigned channels) {
  std::vector<float> samples(std::size_t{frames} * channels);
  for (AVAudioNode* node : nodes) {
    BOOL silence = NO;
    AudioBufferList list{1, {{channels, static_cast<UInt32>(samples.size() * sizeof(float)), samples.data()}}};
    const auto block = state<NodeState>(node).source;
    if (block != nil) block(&silence, nullptr, frames, &list);
  }
  return samples;
}

}  // namespace standin

extern "C" {

OSStatus AudioUnitSetProperty(AudioUnit, AudioUnitPropertyID property, AudioUnitScope,
                              AudioUnitElement, const void* value, UInt32 size) {
  if (property != kAudioOutputUnitProperty_CurrentDevice || size != sizeof(AudioObjectID)) return -1;
  std::memcpy(&stage().chosenDevice, value, size);
  return 0;
}

// Device 7 records with one channel, device 8 plays with two.
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32, const void*, UInt32* size, void* out) {
  const auto give = [&](const void* value, UInt32 bytes) -> OSStatus {
    if (out != nullptr && *size < bytes) return kAudioHardwareBadPropertySizeError;
    if (out != nullptr) std::memcpy(out, value, bytes);
    *size = bytes;
    return 0;
  };
  if (object == kAudioObjectSystemObject && address->mSelector == kAudioHardwarePropertyDevices) {
    const AudioObjectID devices[] = {7, 8};
    return give(devices, sizeof devices);
  }
  const bool records = object == 7;
  if (address->mSelector == kAudioDevicePropertyStreamConfiguration) {
    const bool has = records == (address->mScope == kAudioObjectPropertyScopeInput);
    const AudioBufferList list{has ? 1U : 0U, {{records ? 1U : 2U, 0, nullptr}}};
    return give(&list, sizeof list);
  }
  NSString* text = nil;
  if (address->mSelector == kAudioObjectPropertyName) text = records ? @"Mic" : @"Speakers";
  if (address->mSelector == kAudioDevicePropertyDeviceUID) text = records ? @"mic" : @"speakers";
  if (text == nil) return kAudioHardwareUnspecifiedError;
  NSString* const given = out == nullptr ? nil : [text mutableCopy];
  return give(&given, sizeof given);
}
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32, const void*, UInt32* size) {
  return AudioObjectGetPropertyData(object, address, 0, nullptr, size, nullptr);
}

}  // extern "C"
