// What serves the stand-ins of Core Media, Core Video, VideoToolbox and Accelerate: the portable
// buffers and the H.264 of the Linux platform, compiled a second time in another namespace. A
// file that includes this includes no header of the platform otherwise.
#pragma once
#define vlm engine
#include "platform/accelerate.h"
#include "platform/core_media.h"
#include "platform/core_video.h"
#include "platform/portable/media.h"
#include "platform/video_toolbox.h"
#undef vlm

namespace e = engine::platform;
