// The one place that constructs the plug-in object, so that the class factory does not depend on its
// full declaration.
#pragma once

#include "platform/win32.h"

// A new CZEAviReader with no references yet, as its IUnknown; `result` receives the outcome of its COM
// initialisation. Null when it could not be allocated.
IUnknown* ZeNewAviReader(HRESULT* result, const char* name);
