// GUIDs as text: "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}".
#include "platform/win32_com.h"

namespace {

constexpr int kGuidChars = 38;  // without the zero

// Positions of the 16 bytes' hex digit pairs, in the order Data1 (big-endian text), Data2, Data3, Data4.
constexpr int kBytePositions[16] = {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};

void FormatGuid(const GUID& g, OLECHAR* out) {
    static const char kHex[] = "0123456789ABCDEF";
    BYTE bytes[16] = {
        static_cast<BYTE>(g.Data1 >> 24), static_cast<BYTE>(g.Data1 >> 16), static_cast<BYTE>(g.Data1 >> 8),
        static_cast<BYTE>(g.Data1),       static_cast<BYTE>(g.Data2 >> 8),  static_cast<BYTE>(g.Data2),
        static_cast<BYTE>(g.Data3 >> 8),  static_cast<BYTE>(g.Data3),
    };
    for (int i = 0; i < 8; ++i) bytes[8 + i] = g.Data4[i];
    for (int i = 0; i < kGuidChars; ++i) out[i] = '-';
    out[0] = '{';
    out[kGuidChars - 1] = '}';
    for (int i = 0; i < 16; ++i) {
        out[kBytePositions[i]] = static_cast<OLECHAR>(kHex[bytes[i] >> 4]);
        out[kBytePositions[i] + 1] = static_cast<OLECHAR>(kHex[bytes[i] & 15]);
    }
    out[kGuidChars] = 0;
}

int HexValue(OLECHAR c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool ParseGuid(LPCOLESTR text, GUID& g) {
    for (int i = 0; i < kGuidChars; ++i)
        if (text[i] == 0) return false;
    if (text[kGuidChars] != 0 || text[0] != '{' || text[kGuidChars - 1] != '}') return false;
    if (text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-') return false;
    BYTE bytes[16];
    for (int i = 0; i < 16; ++i) {
        const int hi = HexValue(text[kBytePositions[i]]);
        const int lo = HexValue(text[kBytePositions[i] + 1]);
        if (hi < 0 || lo < 0) return false;
        bytes[i] = static_cast<BYTE>(hi << 4 | lo);
    }
    g.Data1 = static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
              static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
    g.Data2 = static_cast<uint16_t>(bytes[4] << 8 | bytes[5]);
    g.Data3 = static_cast<uint16_t>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i) g.Data4[i] = bytes[8 + i];
    return true;
}

}  // namespace

int StringFromGUID2(REFGUID guid, LPOLESTR text, int maxChars) {
    if (text == nullptr || maxChars < kGuidChars + 1) return 0;
    FormatGuid(guid, text);
    return kGuidChars + 1;
}

HRESULT StringFromCLSID(REFCLSID clsid, LPOLESTR* text) {
    if (text == nullptr) return E_INVALIDARG;
    *text = static_cast<LPOLESTR>(CoTaskMemAlloc((kGuidChars + 1) * sizeof(OLECHAR)));
    if (*text == nullptr) return E_OUTOFMEMORY;
    FormatGuid(clsid, *text);
    return S_OK;
}

HRESULT StringFromIID(REFIID iid, LPOLESTR* text) { return StringFromCLSID(iid, text); }

HRESULT CLSIDFromString(LPCOLESTR text, LPCLSID clsid) {
    if (clsid == nullptr) return E_INVALIDARG;
    if (text == nullptr) {  // no text names no class
        *clsid = GUID_NULL;
        return S_OK;
    }
    GUID parsed;
    if (!ParseGuid(text, parsed)) return CO_E_CLASSSTRING;
    *clsid = parsed;
    return S_OK;
}

HRESULT IIDFromString(LPCOLESTR text, LPGUID iid) {
    if (iid == nullptr) return E_INVALIDARG;
    if (text == nullptr) {
        *iid = GUID_NULL;
        return S_OK;
    }
    GUID parsed;
    if (!ParseGuid(text, parsed)) return CO_E_IIDSTRING;
    *iid = parsed;
    return S_OK;
}
