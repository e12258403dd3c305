#include "platform/linux/pipewire/stream_format.h"

#include <spa/buffer/buffer.h>
#include <spa/buffer/meta.h>
#include <spa/param/param.h>
#include <spa/param/video/format-utils.h>

// PipeWire's calls are macros in GNU C.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wsign-compare"

namespace vlm::platform::pipewire {

const spa_pod* Offer::format() {
  spa_pod_builder_init(&builder_, memory_.data(), static_cast<std::uint32_t>(memory_.size()));
  constexpr std::uint32_t kLargest = 1 << 15;
  const spa_rectangle usual{1920, 1080}, least{1, 1}, most{kLargest, kLargest};
  const spa_fraction variable{0, 1}, wanted{60, 1}, slowest{0, 1}, fastest{240, 1};
  return static_cast<const spa_pod*>(spa_pod_builder_add_object(
      &builder_, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
      SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
      SPA_FORMAT_VIDEO_format,
      SPA_POD_CHOICE_ENUM_Id(3, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRx,
                             SPA_VIDEO_FORMAT_BGRA),
      SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&usual, &least, &most),
      SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&variable), SPA_FORMAT_VIDEO_maxFramerate,
      SPA_POD_CHOICE_RANGE_Fraction(&wanted, &slowest, &fastest)));
}

std::array<const spa_pod*, 2> Offer::buffers() {
  spa_pod_builder_init(&builder_, memory_.data(), static_cast<std::uint32_t>(memory_.size()));
  const int each = sizeof(spa_meta_region), all = each * int{kMostDamage};
  const auto* memory = static_cast<const spa_pod*>(spa_pod_builder_add_object(
      &builder_, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
      SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_dataType,
      SPA_POD_CHOICE_FLAGS_Int((1 << SPA_DATA_MemFd) | (1 << SPA_DATA_MemPtr))));
  const auto* damage = static_cast<const spa_pod*>(
      spa_pod_builder_add_object(&builder_, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta,
                                 SPA_PARAM_META_type, SPA_POD_Id(SPA_META_VideoDamage),
                                 SPA_PARAM_META_size, SPA_POD_CHOICE_RANGE_Int(all, each, all)));
  return {memory, damage};
}

std::optional<Size> agreedSize(const spa_pod* format) {
  spa_video_info_raw agreed{};
  if (spa_format_video_raw_parse(format, &agreed) < 0) return std::nullopt;
  if (agreed.format != SPA_VIDEO_FORMAT_BGRx && agreed.format != SPA_VIDEO_FORMAT_BGRA) {
    return std::nullopt;
  }
  return Size{static_cast<int>(agreed.size.width), static_cast<int>(agreed.size.height)};
}

}  // namespace vlm::platform::pipewire

#pragma GCC diagnostic pop
