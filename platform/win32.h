// The one header through which the module reaches the Windows API.
// On Windows it is the SDK; elsewhere our own declarations, implemented under platform/posix/.
#pragma once

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#include <objbase.h>
#include <mmreg.h>
#include <olectl.h>
#include "platform/win32_sdk_additions.h"
#else
#include "platform/win32_types.h"
#include "platform/win32_files.h"
#include "platform/win32_sync.h"
#include "platform/win32_modules.h"
#include "platform/win32_registry.h"
#include "platform/win32_com.h"
#endif

#include "platform/win32_record_layouts.h"
