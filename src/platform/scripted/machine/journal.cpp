#include "platform/scripted/machine/journal.h"

#include <cstdio>
#include <new>
#include <utility>

namespace vlm::platform::scripted {
namespace {

std::string describeNumber(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.15g", number);
  std::string result = text;
  // A floating number is never taken for an integer.
  if (result.find_first_not_of("-0123456789") == std::string::npos) result += ".0";
  return result;
}

template <class Elements, class Describe>
std::string list(char open, const Elements& elements, char close, Describe describeElement) {
  std::string result(1, open);
  for (const auto& element : elements) {
    if (result.size() > 1) result += ", ";
    result += describeElement(element);
  }
  return result + close;
}

std::string describeValue(const CFValue& value) {
  return describe(value);
}

}  // namespace

std::string describe(const CFValue& value) {
  if (const auto* truth = value.as<bool>()) return *truth ? "true" : "false";
  if (const auto* number = value.as<std::int64_t>()) return std::to_string(*number);
  if (const auto* number = value.as<double>()) return describeNumber(*number);
  if (const auto* text = value.as<std::string>()) return *text;
  if (const auto* data = value.as<CFData>()) return "<" + std::to_string(data->size()) + " bytes>";
  if (const auto* array = value.as<CFArray>()) return list('[', *array, ']', describeValue);
  if (const auto* dictionary = value.as<CFDictionary>()) {
    return list('{', *dictionary, '}',
                [](const auto& entry) { return entry.first + ": " + describe(entry.second); });
  }
  if (const auto* point = value.as<CGPoint>()) {
    return list('(', CFArray{point->x, point->y}, ')', describeValue);
  }
  if (const auto* size = value.as<CGSize>()) {
    return list('(', CFArray{size->width, size->height}, ')', describeValue);
  }
  return value.isNull() ? "null" : "element";
}

std::string describe(CMTime time) {
  return std::to_string(time.value) + "/" + std::to_string(time.timescale);
}

std::string describe(CGRect rect) {
  const CFArray numbers{rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
  return list('(', numbers, ')', describeValue);
}

std::string describe(CVPixelBuffer& buffer) {
  return fourCharacters(CVPixelBufferGetPixelFormatType(buffer)) + " " +
         std::to_string(CVPixelBufferGetWidth(buffer)) + "x" +
         std::to_string(CVPixelBufferGetHeight(buffer));
}

std::string fourCharacters(OSType code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift & 0xFF);
  return text;
}

Fault Journal::enter(std::string_view operation, std::initializer_list<CFValue> arguments) {
  const std::string line = std::string(operation) + list('(', arguments, ')', describeValue);
  const MutexLock lock(mutex_);
  lines_.push_back(line);
  Fault fault = faultFor(line);
  if (fault.throws) throw std::bad_alloc();
  return fault;
}

void Journal::leave(std::string_view operation, std::initializer_list<CFValue> arguments) noexcept {
  try {
    enter(operation, arguments);
  } catch (...) {  // NOLINT(bugprone-empty-catch): no memory for the line: it is lost
  }
}

void Journal::note(std::string line) {
  const MutexLock lock(mutex_);
  lines_.push_back(std::move(line));
}

void Journal::script(std::string prefix, Fault fault, int times, int passing) {
  const MutexLock lock(mutex_);
  scripts_.push_back({std::move(prefix), std::move(fault), times, passing});
}

Fault Journal::faultFor(std::string_view line) {
  for (auto& script : scripts_) {
    if (script.times == 0 || !line.starts_with(script.prefix)) continue;
    if (script.passing > 0) {
      --script.passing;
      continue;
    }
    --script.times;
    return script.fault;
  }
  return {};
}

std::vector<std::string> Journal::take(std::string_view prefix) {
  const MutexLock lock(mutex_);
  auto lines = std::exchange(lines_, {});
  std::erase_if(lines, [&](const std::string& line) { return !line.starts_with(prefix); });
  return lines;
}

}  // namespace vlm::platform::scripted
