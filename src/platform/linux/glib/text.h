#pragma once

#include <string_view>

namespace vlm::platform::glib {

// True when `text` contains `part`, however the characters of both are composed and whatever their
// case. The empty part is contained in nothing.
bool containsIgnoringCase(std::string_view text, std::string_view part);

// True when the two are the same characters, however they are composed.
bool areSameCharacters(std::string_view a, std::string_view b);

bool isUri(std::string_view text);

}  // namespace vlm::platform::glib
