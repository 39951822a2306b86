// Direct loading of a decoder module from the "RegModule" folder beside this module: the module's
// own DllGetClassObject gives its class factory, so the filter needs no registration.
#pragma once

#include <string>

#include "platform/win32.h"

// The module that holds this code (this program when the code is linked into it).
HMODULE ZeOwnModule();

// The file loaded for `moduleFileName` when this module's file is `ownFileName`, built the Windows
// way: drive and folder of `ownFileName`, then "RegModule" as one component, then a backslash unless
// the path ends in one, then `moduleFileName`. False when the result does not fit in MAX_PATH
// characters.
bool ZeRegModulePath(const char* ownFileName, const char* moduleFileName, std::string* path);

// Loads RegModule\<moduleFileName> beside the file of `beside` (this module unless a caller names
// another), takes the class factory of `clsid` from its DllGetClassObject and creates an object
// answering `iid`. E_POINTER without a file name, E_FAIL when the module cannot be loaded or has no
// DllGetClassObject or hands out no factory; otherwise the answers of DllGetClassObject and
// CreateInstance. The module stays loaded for the life of the process. Nothing is reported.
HRESULT LoadModuleClassObject(const char* moduleFileName, REFCLSID clsid, REFIID iid, void** object,
                              HMODULE beside = ZeOwnModule());
