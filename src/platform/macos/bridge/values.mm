#include "platform/macos/bridge/values.h"

#import <ApplicationServices/ApplicationServices.h>
#include <algorithm>
#include <vector>

#include "platform/macos/bridge/native.h"

namespace vlm::platform::bridge {

namespace {

Owned<CFTypeRef> number(std::int64_t value) {
  return Owned<CFTypeRef>(::CFNumberCreate(::kCFAllocatorDefault, ::kCFNumberSInt64Type, &value));
}

Owned<CFTypeRef> number(double value) {
  return Owned<CFTypeRef>(::CFNumberCreate(::kCFAllocatorDefault, ::kCFNumberDoubleType, &value));
}

Owned<CFTypeRef> data(const CFData& bytes) {
  return Owned<CFTypeRef>(::CFDataCreate(::kCFAllocatorDefault, bytes.data(),
                                         static_cast<CFIndex>(bytes.size())));
}

// What a container holds: null has an object there. Nothing when the value can't be expressed.
Owned<CFTypeRef> element(const CFValue& value) {
  return value.isNull() ? Owned<CFTypeRef>::retaining(::kCFNull) : toCF(value);
}

Owned<CFTypeRef> array(const CFArray& values) {
  Owned<CFMutableArrayRef> result(
      ::CFArrayCreateMutable(::kCFAllocatorDefault, 0, &::kCFTypeArrayCallBacks));
  for (const auto& value : values) {
    const auto object = element(value);
    if (!object || !result) return {};
    ::CFArrayAppendValue(result.get(), object.get());
  }
  return Owned<CFTypeRef>(result.release());
}

Owned<CFTypeRef> dictionary(const CFDictionary& values, Keys keys) {
  Owned<CFMutableDictionaryRef> result(
      ::CFDictionaryCreateMutable(::kCFAllocatorDefault, 0, &::kCFTypeDictionaryKeyCallBacks,
                                  &::kCFTypeDictionaryValueCallBacks));
  for (const auto& [name, value] : values) {
    const auto constant = constantFor(keys, name);
    const auto key = constant != nullptr ? Owned<CFStringRef>::retaining(constant) : toString(name);
    const auto object = element(value);
    if (!key || !object || !result) return {};
    ::CFDictionarySetValue(result.get(), key.get(), object.get());
  }
  return Owned<CFTypeRef>(result.release());
}

Owned<CFTypeRef> geometry(AXValueType type, const void* value) {
  return Owned<CFTypeRef>(::AXValueCreate(type, value));
}

CFValue fromNumber(CFNumberRef number) {
  if (::CFNumberIsFloatType(number) != 0) {
    double value = 0;
    ::CFNumberGetValue(number, ::kCFNumberDoubleType, &value);
    return value;
  }
  std::int64_t value = 0;
  ::CFNumberGetValue(number, ::kCFNumberSInt64Type, &value);
  return value;
}

CFValue fromData(CFDataRef data) {
  const auto size = static_cast<std::size_t>(::CFDataGetLength(data));
  const auto* bytes = ::CFDataGetBytePtr(data);
  return size == 0 ? CFData() : CFData(bytes, bytes + size);
}

CFValue fromArray(CFArrayRef array) {
  const auto count = ::CFArrayGetCount(array);
  CFArray result;
  result.reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i) result.push_back(fromCF(::CFArrayGetValueAtIndex(array, i)));
  return result;
}

CFValue fromDictionary(CFDictionaryRef dictionary) {
  const auto count = static_cast<std::size_t>(::CFDictionaryGetCount(dictionary));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  ::CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  CFDictionary result;
  for (std::size_t i = 0; i < count; ++i) {
    if (::CFGetTypeID(keys[i]) != ::CFStringGetTypeID()) continue;
    result.emplace(text(static_cast<CFStringRef>(keys[i])), fromCF(values[i]));
  }
  return result;
}

CFValue fromGeometry(AXValueRef value) {
  ::CGPoint point{};
  if (::AXValueGetValue(value, ::kAXValueTypeCGPoint, &point)) return fromNative(point);
  ::CGSize size{};
  if (::AXValueGetValue(value, ::kAXValueTypeCGSize, &size)) return fromNative(size);
  return {};
}

}  // namespace

CFStringRef constantFor(Keys keys, std::string_view name) {
  const auto found =
      std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.name == name; });
  return found == keys.end() ? nullptr : found->constant;
}

Owned<CFStringRef> toString(std::string_view text) {
  // An empty view may have no address, and a string needs one.
  const auto* const bytes = text.empty() ? "" : text.data();
  return Owned<CFStringRef>(::CFStringCreateWithBytes(
      ::kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes),
      static_cast<CFIndex>(text.size()), ::kCFStringEncodingUTF8, false));
}

std::string text(CFStringRef string) {
  if (string == nullptr) return {};
  const CFRange all{0, ::CFStringGetLength(string)};
  CFIndex size = 0;
  ::CFStringGetBytes(string, all, ::kCFStringEncodingUTF8, '?', false, nullptr, 0, &size);
  std::string result(static_cast<std::size_t>(size), '\0');
  ::CFStringGetBytes(string, all, ::kCFStringEncodingUTF8, '?', false,
                     reinterpret_cast<UInt8*>(result.data()), size, nullptr);
  return result;
}

std::optional<std::string> optionalText(NSString* string) {
  return string == nil ? std::nullopt : std::optional(text(string));
}

Owned<CFTypeRef> toCF(const CFValue& value, Keys keys) {
  if (const auto* truth = value.as<bool>()) {
    return Owned<CFTypeRef>::retaining(*truth ? ::kCFBooleanTrue : ::kCFBooleanFalse);
  }
  if (const auto* integer = value.as<std::int64_t>()) return number(*integer);
  if (const auto* floating = value.as<double>()) return number(*floating);
  if (const auto* string = value.as<std::string>()) {
    return Owned<CFTypeRef>(toString(*string).release());
  }
  if (const auto* bytes = value.as<CFData>()) return data(*bytes);
  if (const auto* values = value.as<CFArray>()) return array(*values);
  if (const auto* entries = value.as<CFDictionary>()) return dictionary(*entries, keys);
  if (const auto* point = value.as<CGPoint>()) {
    const auto native = toNative(*point);
    return geometry(::kAXValueTypeCGPoint, &native);
  }
  if (const auto* size = value.as<CGSize>()) {
    const auto native = toNative(*size);
    return geometry(::kAXValueTypeCGSize, &native);
  }
  if (const auto* other = value.as<Ref<AXUIElement>>()) {
    return Owned<CFTypeRef>::retaining(other->get());
  }
  return {};
}

Owned<CFDictionaryRef> toDictionary(const CFValue& value, Keys keys) {
  if (value.as<CFDictionary>() == nullptr) return {};
  return Owned<CFDictionaryRef>(static_cast<CFDictionaryRef>(toCF(value, keys).release()));
}

CFValue fromCF(CFTypeRef object) {
  if (object == nullptr) return {};
  const auto type = ::CFGetTypeID(object);
  if (type == ::CFBooleanGetTypeID()) {
    return ::CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0;
  }
  if (type == ::CFNumberGetTypeID()) return fromNumber(static_cast<CFNumberRef>(object));
  if (type == ::CFStringGetTypeID()) return text(static_cast<CFStringRef>(object));
  if (type == ::CFDataGetTypeID()) return fromData(static_cast<CFDataRef>(object));
  if (type == ::CFArrayGetTypeID()) return fromArray(static_cast<CFArrayRef>(object));
  if (type == ::CFDictionaryGetTypeID()) {
    return fromDictionary(static_cast<CFDictionaryRef>(object));
  }
  if (type == ::AXUIElementGetTypeID()) {
    return retained<AXUIElement>(static_cast<AXUIElementRef>(object));
  }
  if (type == ::AXValueGetTypeID()) return fromGeometry(static_cast<AXValueRef>(object));
  return {};
}

std::optional<NSError> fromError(::NSError* error) {
  if (error == nil) return std::nullopt;
  return NSError{text(error.localizedDescription)};
}

}  // namespace vlm::platform::bridge
