#pragma once

#include <cstddef>

namespace standin {

// What the calling thread has allocated with new since the last sample was delivered.
std::size_t allocations();
void countAllocations();

}  // namespace standin
