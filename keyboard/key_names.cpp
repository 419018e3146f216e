#include "keyboard/key_names.h"
