// BSTR strings: a 32-bit byte length, the characters, and a zero character.
#include <cstdlib>
#include <cstring>

#include "platform/win32.h"

namespace {

constexpr size_t kPrefix = sizeof(uint32_t);

uint32_t* Prefix(BSTR text) { return reinterpret_cast<uint32_t*>(reinterpret_cast<BYTE*>(text) - kPrefix); }

}  // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT chars) {
    const size_t bytes = static_cast<size_t>(chars) * sizeof(OLECHAR);
    if (bytes > 0xFFFFFFF0u) return nullptr;
    BYTE* block = static_cast<BYTE*>(std::malloc(kPrefix + bytes + sizeof(OLECHAR)));
    if (block == nullptr) return nullptr;
    const uint32_t length = static_cast<uint32_t>(bytes);
    std::memcpy(block, &length, kPrefix);
    BSTR result = reinterpret_cast<BSTR>(block + kPrefix);
    if (text != nullptr)
        std::memcpy(result, text, bytes);
    else
        std::memset(result, 0, bytes);
    result[chars] = 0;
    return result;
}

BSTR SysAllocString(const OLECHAR* text) {
    if (text == nullptr) return nullptr;
    UINT chars = 0;
    while (text[chars] != 0) ++chars;
    return SysAllocStringLen(text, chars);
}

void SysFreeString(BSTR text) {
    if (text != nullptr) std::free(Prefix(text));
}

UINT SysStringByteLen(BSTR text) { return text != nullptr ? *Prefix(text) : 0; }

UINT SysStringLen(BSTR text) { return SysStringByteLen(text) / sizeof(OLECHAR); }
