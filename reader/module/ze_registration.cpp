#include "reader/module/ze_registration.h"

#include <cstring>

#include "reader/ze_module_state.h"
#include "reader/module/ze_registration_table.h"
#include "reader/module/ze_module_report.h"

namespace {

// Every value is written with a data length of 2 bytes, whatever its text: the stored strings are
// the first two characters, without a terminating zero. Kept on purpose.
constexpr DWORD kValueDataLength = 2;

// Creates or opens the row's key and writes its value; false when the key could not be created.
// A value that cannot be written does not count as a failure.
bool WriteRow(const ZeRegistrationRow& row, const char* modulePath) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CLASSES_ROOT, row.key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
        ERROR_SUCCESS) {
        return false;
    }
    const char* text = row.value != nullptr ? row.value : modulePath;
    RegSetValueExA(key, row.valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), kValueDataLength);
    RegCloseKey(key);
    return true;
}

}  // namespace

HRESULT ZeRegisterServer() {
    char modulePath[MAX_PATH] = {};
    GetModuleFileNameA(ZeModuleHandle(), modulePath, MAX_PATH);
    for (size_t i = 0; i < kZeRegistrationRowCount; ++i) {
        if (!WriteRow(kZeRegistrationRows[i], modulePath)) {
            ZeUnregisterServer();
            return ZeModuleReport("ZEAviReaderModule", "DllRegisterServer", SELFREG_E_CLASS);
        }
    }
    return S_OK;
}

HRESULT ZeUnregisterServer() {
    HRESULT result = S_OK;
    for (size_t i = kZeRegistrationRowCount; i-- > 0;) {
        // Rows that share a key delete it again and fail; keys that other filters still use stay.
        if (RegDeleteKeyA(HKEY_CLASSES_ROOT, kZeRegistrationRows[i].key) != ERROR_SUCCESS) result = S_FALSE;
    }
    return result;
}
