#include "platform/linux/h264/sequence_parameters.h"

#include <algorithm>
#include <array>

#include "platform/linux/h264/bit_reader.h"

namespace vlm::platform::h264 {
namespace {

// Level 6.2. No side may be longer than the root of eight times the area.
constexpr std::uint64_t kMostBlocks = 139'264;
constexpr std::uint64_t kLongestSide = 1'055;

// The profiles whose sets describe the chroma format.
constexpr std::array<std::uint8_t, 13> kHighProfiles{100, 110, 122, 244, 44,  83, 86,
                                                     118, 128, 138, 139, 134, 135};
constexpr std::uint32_t kAllChroma = 3;

void skipScalingList(BitReader& reader, int size) {
  std::int32_t last = 8;
  std::int32_t next = 8;
  for (int i = 0; i < size && !reader.isPastEnd(); ++i) {
    if (next != 0) next = (last + reader.signedCode()) & 0xff;
    if (next != 0) last = next;
  }
}

void skipChromaFormat(BitReader& reader) {
  const auto chroma = reader.unsignedCode();
  if (chroma == kAllChroma) reader.flag();  // separate_colour_plane_flag
  reader.unsignedCode();                    // bit_depth_luma_minus8
  reader.unsignedCode();                    // bit_depth_chroma_minus8
  reader.flag();                            // qpprime_y_zero_transform_bypass_flag
  if (!reader.flag()) return;               // seq_scaling_matrix_present_flag
  const int lists = chroma == kAllChroma ? 12 : 8;
  for (int list = 0; list < lists; ++list) {
    if (reader.flag()) skipScalingList(reader, list < 6 ? 16 : 64);
  }
}

void skipPictureOrder(BitReader& reader) {
  const auto type = reader.unsignedCode();
  if (type == 0) reader.unsignedCode();  // log2_max_pic_order_cnt_lsb_minus4
  if (type != 1) return;
  reader.flag();        // delta_pic_order_always_zero_flag
  reader.signedCode();  // offset_for_non_ref_pic
  reader.signedCode();  // offset_for_top_to_bottom_field
  const auto cycle = reader.unsignedCode();
  for (std::uint32_t i = 0; i < cycle && !reader.isPastEnd(); ++i) reader.signedCode();
}

}  // namespace

bool SequenceParameters::isOfAnyLevel() const noexcept {
  return std::max(widthInBlocks, heightInBlocks) <= kLongestSide &&
         widthInBlocks * heightInBlocks <= kMostBlocks;
}

std::optional<SequenceParameters> readSequenceParameters(std::span<const std::uint8_t> set) {
  if (set.size() < 4) return std::nullopt;
  BitReader reader(set.subspan(4));  // behind the header, profile, constraints and level
  reader.unsignedCode();             // seq_parameter_set_id
  if (std::ranges::find(kHighProfiles, set[1]) != kHighProfiles.end()) skipChromaFormat(reader);
  reader.unsignedCode();  // log2_max_frame_num_minus4
  skipPictureOrder(reader);
  reader.unsignedCode();  // max_num_ref_frames
  SequenceParameters parameters;
  parameters.allowsGaps = reader.flag();
  parameters.widthInBlocks = std::uint64_t{reader.unsignedCode()} + 1;
  const std::uint64_t unitsOfHeight = std::uint64_t{reader.unsignedCode()} + 1;
  const bool framesOnly = reader.flag();
  parameters.heightInBlocks = unitsOfHeight * (framesOnly ? 1 : 2);
  if (reader.isPastEnd()) return std::nullopt;
  return parameters;
}

}  // namespace vlm::platform::h264
