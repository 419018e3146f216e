#include "util/crc32.h"
