#include "standin/allocations.h"

#include <cstdlib>
#include <new>

namespace {
thread_local std::size_t count = 0;
}

std::size_t standin::allocations() {
  return count;
}
void standin::countAllocations() {
  count = 0;
}

void* operator new(std::size_t size) {
  ++count;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
