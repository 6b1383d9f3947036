#define TOML_IMPLEMENTATION
#include "host/feed/nxTomlFile.h"
