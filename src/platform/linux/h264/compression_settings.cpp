#include "platform/linux/h264/compression_settings.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "platform/video_toolbox.h"

namespace vlm::platform::h264 {
namespace {

constexpr double kHighestFrameRate = 1000;
constexpr std::int64_t kCoarsestQuantiser = 51;  // of H.264 with 8 bits

std::optional<double> number(const CFValue& value) {
  if (const auto* integer = value.as<std::int64_t>()) return static_cast<double>(*integer);
  if (const auto* floating = value.as<double>()) return *floating;
  return std::nullopt;
}

// Not-a-number fails every comparison and so is refused with the rest.
OSStatus setNumber(double& field, const CFValue& value, double above, double atMost) {
  const auto given = number(value);
  if (!given || !(*given > above && *given <= atMost)) return kVTParameterErr;
  field = *given;
  return noErr;
}

OSStatus setFlag(CompressionSettings&, const CFValue& value) {
  // Every session works in real time and none reorders, whatever is allowed to it.
  return value.as<bool>() != nullptr ? noErr : kVTParameterErr;
}

OSStatus setProfile(CompressionSettings&, const CFValue& value) {
  const auto* profile = value.as<std::string>();
  if (profile == nullptr) return kVTParameterErr;
  return *profile == kVTProfileLevel_H264_Main_AutoLevel ? noErr : kVTPropertyNotSupportedErr;
}

OSStatus setFrameRate(CompressionSettings& settings, const CFValue& value) {
  return setNumber(settings.framesPerSecond, value, 0, kHighestFrameRate);
}

OSStatus setKeyFrameInterval(CompressionSettings& settings, const CFValue& value) {
  const auto* frames = value.as<std::int64_t>();
  if (frames == nullptr || *frames < 0) return kVTParameterErr;
  settings.keyFrameIntervalFrames = *frames;
  return noErr;
}

OSStatus setKeyFrameIntervalDuration(CompressionSettings& settings, const CFValue& value) {
  const auto seconds = number(value);
  if (!seconds || !(*seconds >= 0)) return kVTParameterErr;
  settings.keyFrameIntervalSeconds = *seconds;
  return noErr;
}

OSStatus setWorstQuantiser(CompressionSettings& settings, const CFValue& value) {
  const auto* quantiser = value.as<std::int64_t>();
  if (quantiser == nullptr || *quantiser < 1 || *quantiser > kCoarsestQuantiser) {
    return kVTParameterErr;
  }
  settings.worstQuantiser = static_cast<int>(*quantiser);
  return noErr;
}

OSStatus setBitRate(CompressionSettings& settings, const CFValue& value) {
  return setNumber(settings.bitsPerSecond, value, 0, 1e12);
}

OSStatus setDataRateLimits(CompressionSettings& settings, const CFValue& value) {
  const auto* pair = value.as<CFArray>();
  if (pair == nullptr || pair->size() != 2) return kVTParameterErr;
  CompressionSettings changed = settings;
  if (setNumber(changed.limitBytes, pair->front(), 0, 1e12) != noErr ||
      setNumber(changed.limitSeconds, pair->back(), 0, 3600) != noErr) {
    return kVTParameterErr;
  }
  settings = changed;
  return noErr;
}

struct Property {
  std::string_view key;
  OSStatus (*apply)(CompressionSettings&, const CFValue&);
};

constexpr Property kProperties[] = {
    {kVTCompressionPropertyKey_RealTime, setFlag},
    {kVTCompressionPropertyKey_AllowFrameReordering, setFlag},
    {kVTCompressionPropertyKey_ProfileLevel, setProfile},
    {kVTCompressionPropertyKey_ExpectedFrameRate, setFrameRate},
    {kVTCompressionPropertyKey_MaxKeyFrameInterval, setKeyFrameInterval},
    {kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration, setKeyFrameIntervalDuration},
    {kVTCompressionPropertyKey_MaxAllowedFrameQP, setWorstQuantiser},
    {kVTCompressionPropertyKey_AverageBitRate, setBitRate},
    {kVTCompressionPropertyKey_DataRateLimits, setDataRateLimits},
};

}  // namespace

OSStatus applyProperty(CompressionSettings& settings, std::string_view key, const CFValue& value) {
  const auto* property = std::ranges::find(kProperties, key, &Property::key);
  if (property == std::end(kProperties)) return kVTPropertyNotSupportedErr;
  return property->apply(settings, value);
}

}  // namespace vlm::platform::h264
