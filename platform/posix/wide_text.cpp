// UTF-8 <-> UTF-16 conversions in the shape of MultiByteToWideChar and WideCharToMultiByte.
#include <new>
#include <string>

#include "platform/win32_com.h"
#include "platform/win32_files.h"

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

// Decodes one code point from UTF-8; ill-formed sequences give U+FFFD and consume one byte.
uint32_t DecodeUtf8(const unsigned char* s, size_t n, size_t& used) {
    const unsigned char c = s[0];
    used = 1;
    if (c < 0x80) return c;
    size_t len = 0;
    uint32_t cp = 0, min = 0;
    if ((c & 0xE0) == 0xC0) {
        len = 2;
        cp = c & 0x1F;
        min = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
        len = 3;
        cp = c & 0x0F;
        min = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
        len = 4;
        cp = c & 0x07;
        min = 0x10000;
    } else {
        return kReplacement;
    }
    if (n < len) return kReplacement;
    for (size_t i = 1; i < len; ++i) {
        if ((s[i] & 0xC0) != 0x80) return kReplacement;
        cp = cp << 6 | (s[i] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kReplacement;
    used = len;
    return cp;
}

void AppendUtf8(uint32_t cp, std::string& out) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | cp >> 6));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | cp >> 12));
        out.push_back(static_cast<char>(0x80 | (cp >> 6 & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | cp >> 18));
        out.push_back(static_cast<char>(0x80 | (cp >> 12 & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp >> 6 & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

bool KnownCodePage(UINT codePage) { return codePage == CP_ACP || codePage == CP_UTF8; }

// Copies a finished conversion into the caller's buffer with the Windows size rules.
template <typename Unit, typename Text>
int Deliver(const Text& converted, Unit* out, int outSize) {
    const int needed = static_cast<int>(converted.size());
    if (outSize == 0) return needed;
    if (needed > outSize) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    for (int i = 0; i < needed; ++i) out[i] = static_cast<Unit>(converted[static_cast<size_t>(i)]);
    return needed;
}

int MultiByteToWideUnguarded(UINT codePage, LPCSTR text, int bytes, WCHAR* wide, int wideChars) {
    if (!KnownCodePage(codePage) || text == nullptr || bytes == 0 || bytes < -1 || wideChars < 0 ||
        (wideChars > 0 && wide == nullptr)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const size_t n = bytes == -1 ? std::char_traits<char>::length(text) + 1 : static_cast<size_t>(bytes);
    const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
    std::u16string converted;
    for (size_t pos = 0; pos < n;) {
        size_t used = 0;
        const uint32_t cp = DecodeUtf8(s + pos, n - pos, used);
        pos += used;
        if (cp >= 0x10000) {
            converted.push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            converted.push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else {
            converted.push_back(static_cast<char16_t>(cp));
        }
    }
    return Deliver(converted, wide, wideChars);
}

int WideToMultiByteUnguarded(UINT codePage, const WCHAR* wide, int wideChars, LPSTR text, int bytes,
                             LPBOOL usedDefault) {
    if (!KnownCodePage(codePage) || wide == nullptr || wideChars == 0 || wideChars < -1 || bytes < 0 ||
        (bytes > 0 && text == nullptr)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (usedDefault != nullptr) *usedDefault = FALSE;
    size_t n = 0;
    if (wideChars == -1) {
        while (wide[n] != 0) ++n;
        ++n;
    } else {
        n = static_cast<size_t>(wideChars);
    }
    std::string converted;
    for (size_t i = 0; i < n; ++i) {
        uint32_t cp = wide[i];
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (wide[i + 1] - 0xDC00u);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = kReplacement;
        }
        AppendUtf8(cp, converted);
    }
    return Deliver(converted, text, bytes);
}

// The conversions build their result in a string first; running out of memory is reported as on Windows.
template <typename Work>
int Guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD, LPCSTR text, int bytes, WCHAR* wide, int wideChars) {
    return Guarded([&] { return MultiByteToWideUnguarded(codePage, text, bytes, wide, wideChars); });
}

int WideCharToMultiByte(UINT codePage, DWORD, const WCHAR* wide, int wideChars, LPSTR text, int bytes, LPCSTR,
                        LPBOOL usedDefault) {
    return Guarded([&] { return WideToMultiByteUnguarded(codePage, wide, wideChars, text, bytes, usedDefault); });
}
