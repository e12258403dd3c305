// The blocks run-time: blocks are objects, which Debian's library does not make of them.
#import <Foundation/Foundation.h>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {
void* _NSConcreteStackBlock[32];
void* _NSConcreteGlobalBlock[32];
}

namespace {
enum : int { kCountMask = 0xffff, kOnHeap = 1 << 24, kHelpers = 1 << 25, kGlobal = 1 << 28 };
enum : int { kObject = 3, kBlock = 7, kVariable = 8, kInVariable = 128 };

struct Descriptor {
  unsigned long reserved, size;
  void (*copy)(void*, const void*);
  void (*dispose)(const void*);
};
struct Block {
  void* isa;
  int flags, reserved;
  void* invoke;
  const Descriptor* descriptor;
};
struct Variable {
  void* isa;
  Variable* forwarding;
  int flags, size;
  void (*keep)(Variable*, Variable*);
  void (*destroy)(Variable*);
};

bool has(int& flags, int bit) { return (std::atomic_ref(flags).load(std::memory_order_relaxed) & bit) != 0; }
void add(int& flags) { std::atomic_ref(flags).fetch_add(1, std::memory_order_relaxed); }
bool dropLast(int& flags) { return (std::atomic_ref(flags).fetch_sub(1, std::memory_order_acq_rel) & kCountMask) == 1; }

Variable* copyOf(Variable* from) {
  Variable* there = from->forwarding;
  if (has(there->flags, kOnHeap)) { add(there->flags); return there; }
  auto* copy = static_cast<Variable*>(std::malloc(static_cast<std::size_t>(from->size)));
  std::memcpy(copy, from, static_cast<std::size_t>(from->size));
  copy->flags = (from->flags & ~kCountMask) | kOnHeap | 2;  // one for the block, one for the stack frame
  copy->forwarding = copy;
  if (has(from->flags, kHelpers)) from->keep(copy, from);
  from->forwarding = copy;
  return copy;
}
void drop(Variable* variable) {
  variable = variable->forwarding;
  if (!has(variable->flags, kOnHeap) || !dropLast(variable->flags)) return;
  if (has(variable->flags, kHelpers)) variable->destroy(variable);
  std::free(variable);
}
}  // namespace

extern "C" {
void* _Block_copy(const void* object) {
  auto* from = static_cast<Block*>(const_cast<void*>(object));
  if (!from || has(from->flags, kGlobal)) return from;
  if (has(from->flags, kOnHeap)) { add(from->flags); return from; }
  auto* copy = static_cast<Block*>(std::malloc(from->descriptor->size));
  std::memcpy(copy, from, from->descriptor->size);
  copy->flags = (from->flags & ~kCountMask) | kOnHeap | 1;
  if (has(from->flags, kHelpers)) from->descriptor->copy(copy, from);
  return copy;
}
void _Block_release(const void* object) {
  auto* block = static_cast<Block*>(const_cast<void*>(object));
  if (!block || !has(block->flags, kOnHeap) || !dropLast(block->flags)) return;
  if (has(block->flags, kHelpers)) block->descriptor->dispose(block);
  std::free(block);
}
void _Block_object_assign(void* to, const void* object, int flags) {
  void* value = const_cast<void*>(object);
  if ((flags & kInVariable) != 0) {}  // __block variables do not keep what they name
  else if ((flags & 15) == kVariable) value = copyOf(static_cast<Variable*>(value));
  else if ((flags & 15) == kBlock) value = _Block_copy(value);
  else if ((flags & 15) == kObject) [static_cast<id>(value) retain];
  *static_cast<void**>(to) = value;
}
void _Block_object_dispose(const void* object, int flags) {
  if ((flags & kInVariable) != 0) return;
  if ((flags & 15) == kVariable) drop(static_cast<Variable*>(const_cast<void*>(object)));
  else if ((flags & 15) == kBlock) _Block_release(object);
  else if ((flags & 15) == kObject) [static_cast<id>(const_cast<void*>(object)) release];
}
}

@interface StandInBlock : NSObject
@end
@implementation StandInBlock
+ (void)load {
  Class block = [StandInBlock class];
  std::memcpy(_NSConcreteStackBlock, block, 13 * sizeof(void*));  // the run-time's class has 13 words
  std::memcpy(_NSConcreteGlobalBlock, block, 13 * sizeof(void*));
}
- (id)copyWithZone:(NSZone*)zone { return static_cast<id>(_Block_copy(self)); }
- (id)copy { return static_cast<id>(_Block_copy(self)); }
- (id)retain { return static_cast<id>(_Block_copy(self)); }
- (oneway void)release { _Block_release(self); }
@end
