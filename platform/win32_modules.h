// Module functions (kernel32): loading libraries, finding exports, module file names.
#pragma once

#include "platform/win32_types.h"
