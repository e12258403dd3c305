// Constants whose headers declare them const, and which are known only once the run-time is up: so
// this file sees no header.
extern "C" {
const void* kCFBooleanTrue;
const void* kCFBooleanFalse;
const void* kCFNull;
const void* kCFAllocatorDefault;
struct {
  long unused[8];
} kCFTypeArrayCallBacks, kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks;
struct {
  long long value;
  int timescale;
  unsigned flags;
  long long epoch;
} kCMTimeInvalid;

#define KEY(name) const void* name;
#include "keys.inc"
#undef KEY

void standInConstants(const void* yes, const void* no, const void* null,
                      const void* (*make)(const char*)) {
  kCFBooleanTrue = yes;
  kCFBooleanFalse = no;
  kCFNull = null;
#define KEY(name) name = make("a " #name);
#include "keys.inc"
#undef KEY
}
}
