// By hand: never looked into here.
// names: AudioTimeStamp
#include <MacTypes.h>
#include <stdint.h>
typedef struct AudioTimeStamp AudioTimeStamp;
