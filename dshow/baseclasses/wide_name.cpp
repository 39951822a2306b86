// Conversions and copies of WCHAR names.
#include "dshow/baseclasses/wide_name.h"

#include <cstring>

namespace {

size_t WideLength(const WCHAR* text)
{
    size_t n = 0;
    while (text != nullptr && text[n] != 0)
        ++n;
    return n;
}

}  // namespace

CWideName MakeWideName(const char* text)
{
    if (text == nullptr || *text == 0)
        return CWideName();
    const int needed = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    if (needed <= 1)
        return CWideName();
    CWideName wide(static_cast<size_t>(needed), WCHAR(0));
    MultiByteToWideChar(CP_UTF8, 0, text, -1, reinterpret_cast<WCHAR*>(&wide[0]), needed);
    wide.resize(static_cast<size_t>(needed - 1));
    return wide;
}

void CopyWideName(WCHAR* target, size_t capacity, const WCHAR* source)
{
    if (capacity == 0)
        return;
    size_t n = WideLength(source);
    if (n >= capacity)
        n = capacity - 1;
    if (n != 0)
        std::memcpy(target, source, n * sizeof(WCHAR));
    target[n] = 0;
}

bool WideNameEquals(const WCHAR* a, const WCHAR* b)
{
    const size_t n = WideLength(a);
    return n == WideLength(b) && (n == 0 || std::memcmp(a, b, n * sizeof(WCHAR)) == 0);
}

HRESULT TaskMemWideName(const WCHAR* source, LPWSTR* copy)
{
    if (copy == nullptr)
        return E_POINTER;
    const size_t n = WideLength(source);
    *copy = static_cast<LPWSTR>(CoTaskMemAlloc((n + 1) * sizeof(WCHAR)));
    if (*copy == nullptr)
        return E_OUTOFMEMORY;
    CopyWideName(*copy, n + 1, source);
    return S_OK;
}
