// Windows only: what the module uses beside the SDK's own declarations. The POSIX layer declares the
// same names next to the calls they belong to (win32_registry.h).
#pragma once

// The longest registry key name, in characters: a documented limit that no SDK header names.
constexpr DWORD ZE_REG_MAX_KEY_NAME = 255;
