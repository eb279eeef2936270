// The version of the library.
#include "seed/sdblk.h"

#define TEXT_OF(number) #number
#define VERSION_TEXT(major, minor, patch) TEXT_OF(major) "." TEXT_OF(minor) "." TEXT_OF(patch)

const char *sdblk_version(void) {
  return VERSION_TEXT(SDBLK_VERSION_MAJOR, SDBLK_VERSION_MINOR, SDBLK_VERSION_PATCH);
}
