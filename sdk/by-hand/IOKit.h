// By hand: IOKit/IOTypes.h, as Apple publishes it with its kernel.
// names: io_string_t
#include <mach/mach_types.h>
#include <stdint.h>
typedef char io_string_t[512];
