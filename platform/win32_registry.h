// Registry subset (advapi32).
//
// On POSIX the registry is one text file in the REGEDIT4 format. Its path comes from the environment
// variable ZE_REGISTRY_FILE, else $XDG_DATA_HOME/zeavireader/registry.reg, else
// ~/.local/share/zeavireader/registry.reg. Every change is a read-modify-write under an exclusive
// flock on "<file>.lock", published by writing a temporary file and renaming it over the store, so
// processes that write at the same time lose nothing. Key and value names compare without regard to
// case. HKEY_CLASSES_ROOT is the view of HKEY_LOCAL_MACHINE\SOFTWARE\Classes.
#pragma once

#include <string>

#include "platform/win32_files.h"
#include "platform/win32_types.h"

struct HKEY__;
typedef HKEY__* HKEY;
typedef HKEY* PHKEY;
typedef DWORD REGSAM;

#define ZE_PREDEFINED_HKEY(value) (reinterpret_cast<HKEY>(static_cast<intptr_t>(static_cast<int32_t>(value))))
#define HKEY_CLASSES_ROOT ZE_PREDEFINED_HKEY(0x80000000u)
#define HKEY_CURRENT_USER ZE_PREDEFINED_HKEY(0x80000001u)
#define HKEY_LOCAL_MACHINE ZE_PREDEFINED_HKEY(0x80000002u)
#define HKEY_USERS ZE_PREDEFINED_HKEY(0x80000003u)

// Value types.
constexpr DWORD REG_NONE = 0;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_MULTI_SZ = 7;
constexpr DWORD REG_QWORD = 11;

// Access rights.
constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
constexpr REGSAM KEY_SET_VALUE = 0x0002;
constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
constexpr REGSAM KEY_NOTIFY = 0x0010;
constexpr REGSAM KEY_CREATE_LINK = 0x0020;
constexpr REGSAM KEY_WOW64_64KEY = 0x0100;
constexpr REGSAM KEY_WOW64_32KEY = 0x0200;
constexpr REGSAM KEY_READ = 0x20019;
constexpr REGSAM KEY_WRITE = 0x20006;
constexpr REGSAM KEY_EXECUTE = 0x20019;
constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

// Options and dispositions of RegCreateKeyExA.
constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
constexpr DWORD REG_CREATED_NEW_KEY = 1;
constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// Error numbers the registry returns beside the common ones.
constexpr DWORD ERROR_BAD_PATHNAME = 161;
constexpr DWORD ERROR_NOACCESS = 998;
constexpr DWORD ERROR_CANTOPEN = 1011;
constexpr DWORD ERROR_CANTREAD = 1012;
constexpr DWORD ERROR_CANTWRITE = 1013;
constexpr DWORD ERROR_REGISTRY_CORRUPT = 1015;
constexpr DWORD ERROR_KEY_DELETED = 1018;

// Longest key name component and value name, in characters.
constexpr DWORD ZE_REG_MAX_KEY_NAME = 255;
constexpr DWORD ZE_REG_MAX_VALUE_NAME = 16383;

// All functions return a Win32 error number (ERROR_SUCCESS on success) as a LONG.
LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM desired,
                     LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition);
LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM desired, PHKEY result);
LONG RegCloseKey(HKEY key);
LONG RegSetValueExA(HKEY key, LPCSTR valueName, DWORD reserved, DWORD type, const BYTE* data, DWORD dataSize);
LONG RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, BYTE* data, LPDWORD dataSize);
LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameChars, LPDWORD reserved, LPSTR keyClass,
                   LPDWORD classChars, FILETIME* lastWrite);
LONG RegEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameChars, LPDWORD reserved, LPDWORD type,
                   BYTE* data, LPDWORD dataSize);
LONG RegQueryInfoKeyA(HKEY key, LPSTR keyClass, LPDWORD classChars, LPDWORD reserved, LPDWORD subKeys,
                      LPDWORD maxSubKeyChars, LPDWORD maxClassChars, LPDWORD values, LPDWORD maxValueNameChars,
                      LPDWORD maxValueSize, LPDWORD securityDescriptorSize, FILETIME* lastWrite);
LONG RegDeleteKeyA(HKEY key, LPCSTR subKey);
LONG RegDeleteValueA(HKEY key, LPCSTR valueName);

// Store identity (POSIX only): the file of the store in use, and a text that changes whenever that file
// is replaced, so that callers keeping what they read can tell when to read again. Both are cheap.
std::string ZeRegistryStorePath();
std::string ZeRegistryStoreVersion();
