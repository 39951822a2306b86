// Registry subset (advapi32).
#pragma once

#include "platform/win32_types.h"
