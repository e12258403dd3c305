/*
 * A host that knows of the library only when it runs: loads it, asks its version, lets it go. It
 * has no display and no thread but its own.
 */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>

int main(int count, char** arguments) {
  void* library = count == 2 ? dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) return fprintf(stderr, "%s\n", dlerror()), 1;
  int32_t (*version)(void) = NULL;
  *(void**)&version = dlsym(library, "vlm_abi_version");
  if (version == NULL || version() != 3) return 2;
  return dlclose(library);
}
