// Names of filters and pins: WCHAR text of bounded length, made from the ASCII/UTF-8 names the classes
// are constructed with.
#pragma once

#include <string>

#include "platform/win32_dshow.h"

typedef std::basic_string<WCHAR> CWideName;

// UTF-8 text as WCHAR text.
CWideName MakeWideName(const char* text);
// Copies zero-terminated `source` (null: empty) into `target` of `capacity` characters, truncating.
void CopyWideName(WCHAR* target, size_t capacity, const WCHAR* source);
bool WideNameEquals(const WCHAR* a, const WCHAR* b);
// A copy in task memory, as IPin::QueryId hands out; E_OUTOFMEMORY when it cannot be allocated.
HRESULT TaskMemWideName(const WCHAR* source, LPWSTR* copy);
