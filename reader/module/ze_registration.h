// Writing and removing the module's registry entries.
#pragma once

#include "platform/win32.h"

// S_OK, or SELFREG_E_CLASS after undoing what was written when a key could not be created.
HRESULT ZeRegisterServer();
// S_OK when every row's key was deleted, S_FALSE when any deletion failed.
HRESULT ZeUnregisterServer();
