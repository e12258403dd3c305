/* A host's first program: it finds the installed header and links the library. */
#include <VelmoraMacNative.h>

int main(void) {
  return vlm_abi_version() == 3 ? 0 : 1;
}
