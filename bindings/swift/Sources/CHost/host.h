/* What the demo's view needs of a host on Linux: a window, and turns of the main loop. */
#include <X11/Xlib.h>

int g_main_context_iteration(void* context, int may_block);
