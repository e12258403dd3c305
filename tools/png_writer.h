#pragma once

#include <string>

#include "geometry.h"

namespace vlm::tools {

// Writes the picture of a '420v' pixel buffer as a PNG file.
void writePng(void* pixbuf, Size size, const std::string& path);

}  // namespace vlm::tools
