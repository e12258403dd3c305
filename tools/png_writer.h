#pragma once

#include <string>

namespace vlm::tools {

// Writes the picture of a pixel buffer as a PNG file.
void writePng(void* pixbuf, int width, int height, const std::string& path);

}  // namespace vlm::tools
