// By hand: Darwin's own headers, and the literal that the compiler makes constants of.
// names: CGFloat boolean_t
#include <MacTypes.h>
#include <mach/boolean.h>
#include <stdbool.h>
#include <stdint.h>
typedef double CGFloat;
#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString("" text ""))
