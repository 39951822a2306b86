// Open registry keys: the handles RegOpenKeyExA and RegCreateKeyExA give out, the predefined roots, and
// the parsing of sub-key paths.
#pragma once

#include "platform/posix/registry_tree.h"
#include "platform/win32_registry.h"

namespace ze_posix {

struct OpenRegKey {
    RegPath path;
    REGSAM access = 0;
    bool predefined = false;
};

// The key behind a handle (predefined or open); ERROR_INVALID_HANDLE when it is neither.
DWORD LookupRegKey(HKEY key, OpenRegKey& out);
HKEY NewRegKeyHandle(const OpenRegKey& key);
// ERROR_INVALID_HANDLE for handles that are not open; closing a predefined root succeeds.
DWORD CloseRegKeyHandle(HKEY key);

// Splits "a\b\c" into its components. Null and "" give none; a leading backslash or an empty component
// in the middle is ERROR_BAD_PATHNAME; a component longer than 255 characters or holding control
// characters is ERROR_INVALID_PARAMETER. One trailing backslash is accepted.
DWORD SplitSubKey(LPCSTR subKey, RegPath& parts);

}  // namespace ze_posix
