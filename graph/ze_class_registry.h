// What the registry holds for a filter's class: the in-process server path under
// HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{clsid}\InprocServer32, so a caller can say which file
// a decoder comes from.
#pragma once

#include <string>

#include "platform/win32_dshow.h"

// The filter's class identifier (IPersist::GetClassID) is looked for among the subkeys of
// SOFTWARE\Classes\CLSID, ignoring case; the default value of its InprocServer32 key goes into
// `path`. S_OK when found, S_FALSE with an empty path when the class key, its server key or the
// CLSID key itself is missing; E_POINTER for null arguments; the filter's or COM's own failures as
// they come. Nothing is reported.
HRESULT GetClassRegistryPath(IBaseFilter* filter, std::string* path);
