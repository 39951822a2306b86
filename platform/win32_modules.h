// Module functions (kernel32): loading libraries, finding exports, module file names.
//
// On POSIX an HMODULE is the dynamic loader's handle of the shared object (its link map), and the
// main program's handle is GetModuleHandleA(nullptr). Paths may use either separator and a drive
// letter, which is dropped. GetModuleFileNameA gives the absolute path of the file.
#pragma once

#include "platform/win32_types.h"

// The generic function pointer type, so that casting an export to its real type draws no warning.
typedef void (*FARPROC)();

constexpr DWORD DONT_RESOLVE_DLL_REFERENCES = 0x00000001;
constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 0x00000002;
constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x00000008;

constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 0x00000001;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 0x00000002;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 0x00000004;

constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;

// Reasons passed to a module's entry point.
constexpr DWORD DLL_PROCESS_DETACH = 0;
constexpr DWORD DLL_PROCESS_ATTACH = 1;
constexpr DWORD DLL_THREAD_ATTACH = 2;
constexpr DWORD DLL_THREAD_DETACH = 3;

// Null with GetLastError() == ERROR_MOD_NOT_FOUND (126) when the file is missing or a library it needs
// is missing, ERROR_BAD_EXE_FORMAT when the file is not a loadable library. The search-path flags are
// accepted and make no difference.
HMODULE LoadLibraryA(LPCSTR fileName);
HMODULE LoadLibraryExA(LPCSTR fileName, HANDLE reserved, DWORD flags);
BOOL FreeLibrary(HMODULE module);
// Null with ERROR_PROC_NOT_FOUND (127) when the module has no such export.
FARPROC GetProcAddress(HMODULE module, LPCSTR procName);
// The length copied without the zero; when the buffer is too small the path is cut to size - 1
// characters plus the zero, `size` is returned and the last error is ERROR_INSUFFICIENT_BUFFER.
DWORD GetModuleFileNameA(HMODULE module, LPSTR fileName, DWORD size);
// Null name: the main program. Otherwise a library already loaded, else null with ERROR_MOD_NOT_FOUND.
HMODULE GetModuleHandleA(LPCSTR moduleName);
// With GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS `moduleName` is an address inside the module wanted.
BOOL GetModuleHandleExA(DWORD flags, LPCSTR moduleName, HMODULE* module);
