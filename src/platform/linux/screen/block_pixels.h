#pragma once

#include "platform/linux/x11/rectangle.h"
#include "platform/portable/plane.h"

namespace vlm::platform::screen {

// Compare and copy the same part of two pictures, which begins at an even pixel.
bool isSame(const PlanesView& a, const PlanesView& b, x11::Size size);
void copyPixels(const PlanesView& from, const Planes& to, x11::Size size);

}  // namespace vlm::platform::screen
