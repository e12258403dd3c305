// Darwin's basic types, on Linux.
#pragma once
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>
typedef int32_t OSStatus;
typedef uint32_t OSType;
typedef uint32_t FourCharCode;
typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef uint16_t UInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef float Float32;
typedef double Float64;
enum { noErr = 0 };
