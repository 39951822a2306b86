// The registry entries of the module: rows of key (under HKEY_CLASSES_ROOT), value name and value.
#pragma once

#include <cstddef>

struct ZeRegistrationRow {
    const char* key;
    const char* valueName;  // null: the key's default value
    const char* value;      // null: the full path of this module's file
};

extern const ZeRegistrationRow kZeRegistrationRows[];
extern const size_t kZeRegistrationRowCount;
