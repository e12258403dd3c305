// By hand: Darwin's own header of the queues.
#include <dispatch/dispatch.h>
