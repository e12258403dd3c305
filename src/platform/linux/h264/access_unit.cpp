#include "platform/linux/h264/access_unit.h"

#include <algorithm>
#include <cstddef>

#include "platform/linux/h264/bit_reader.h"
#include "platform/linux/h264/nal_unit.h"

namespace vlm::platform::h264 {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Each slice type has two numbers, five apart.
constexpr std::uint32_t kSliceTypes = 5;
enum SliceType : std::uint32_t { kB = 1, kI = 2, kSI = 4 };

std::uint32_t sliceTypeOf(Bytes slice) {
  BitReader reader(slice.subspan(1));
  reader.unsignedCode();  // first_mb_in_slice
  return reader.unsignedCode() % kSliceTypes;
}

bool isSlice(Bytes unit) {
  const auto type = typeOf(unit);
  return type == NalUnitType::slice || type == NalUnitType::partitionA ||
         type == NalUnitType::idrSlice;
}

}  // namespace

AccessUnitFacts factsOf(Bytes accessUnit) {
  AccessUnitFacts facts;
  bool hasSlice = false;
  bool hasInterSlice = false;
  while (accessUnit.size() > kLengthPrefix) {
    const std::size_t length =
        std::size_t{accessUnit[0]} << 24 | accessUnit[1] << 16 | accessUnit[2] << 8 | accessUnit[3];
    accessUnit = accessUnit.subspan(kLengthPrefix);
    if (length == 0) continue;
    if (const auto unit = accessUnit.first(std::min(length, accessUnit.size())); isSlice(unit)) {
      const auto type = sliceTypeOf(unit);
      hasSlice = true;
      hasInterSlice = hasInterSlice || (type != kI && type != kSI);
      facts.isBiPredictive = facts.isBiPredictive || type == kB;
      facts.hasIdrSlice = facts.hasIdrSlice || typeOf(unit) == NalUnitType::idrSlice;
    }
    if (length > accessUnit.size()) break;
    accessUnit = accessUnit.subspan(length);
  }
  facts.isIntra = hasSlice && !hasInterSlice;
  return facts;
}

}  // namespace vlm::platform::h264
