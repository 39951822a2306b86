// kernel32 module functions over the dynamic loader.
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/kernel_objects.h"
#include "platform/win32_files.h"
#include "platform/win32_modules.h"

namespace {

// True when `module` is one of the objects the loader has loaded. Handles are checked before use so
// that a stale or made-up handle gives an error number instead of a crash.
bool IsLoadedModule(HMODULE module) {
    if (module == nullptr) return false;
    void* self = ::dlopen(nullptr, RTLD_LAZY);
    struct link_map* map = nullptr;
    if (self == nullptr) return false;
    const bool known = ::dlinfo(self, RTLD_DI_LINKMAP, &map) == 0 && map != nullptr;
    ::dlclose(self);
    if (!known) return false;
    while (map->l_prev != nullptr) map = map->l_prev;
    for (; map != nullptr; map = map->l_next)
        if (static_cast<void*>(map) == module) return true;
    return false;
}

std::string ProgramPath() {
    char buffer[PATH_MAX];
    ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0) return std::string();
    return std::string(buffer, static_cast<size_t>(n));
}

std::string AbsolutePath(const char* path) {
    char resolved[PATH_MAX];
    if (::realpath(path, resolved) != nullptr) return resolved;
    return path;
}

HMODULE LoadLibraryExUnguarded(LPCSTR fileName) {
    if (fileName == nullptr || fileName[0] == '\0') {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::string path = ze_posix::NativePath(fileName);
    const bool hasFolder = path.find('/') != std::string::npos;
    struct stat st;
    if (hasFolder && ::stat(path.c_str(), &st) != 0) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    ::dlerror();
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        // A file that exists but does not load is not a library, unless one it depends on is missing.
        const char* why = ::dlerror();
        const bool missingPart = why != nullptr && std::strstr(why, "No such file") != nullptr;
        SetLastError(!hasFolder || missingPart ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT);
        return nullptr;
    }
    return handle;
}

DWORD GetModuleFileNameUnguarded(HMODULE module, LPSTR fileName, DWORD size) {
    std::string path;
    if (module == nullptr) {
        path = ProgramPath();
    } else {
        if (!IsLoadedModule(module)) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return 0;
        }
        const struct link_map* map = static_cast<const struct link_map*>(module);
        path = (map->l_name == nullptr || map->l_name[0] == '\0') ? ProgramPath() : AbsolutePath(map->l_name);
    }
    if (path.empty()) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    if (fileName == nullptr || size == 0) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    if (path.size() >= size) {
        std::memcpy(fileName, path.data(), size - 1);
        fileName[size - 1] = '\0';
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    }
    std::memcpy(fileName, path.c_str(), path.size() + 1);
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(path.size());
}

HMODULE GetModuleHandleUnguarded(LPCSTR moduleName) {
    if (moduleName == nullptr) return ::dlopen(nullptr, RTLD_LAZY);  // the program's handle is not counted
    void* handle = ::dlopen(ze_posix::NativePath(moduleName).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    ::dlclose(handle);  // GetModuleHandle does not add a reference
    return handle;
}

BOOL GetModuleHandleExUnguarded(DWORD flags, LPCSTR moduleName, HMODULE* module) {
    if (module == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *module = nullptr;
    if ((flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) == 0) {
        HMODULE found = GetModuleHandleUnguarded(moduleName);
        if (found == nullptr) return FALSE;
        if (moduleName != nullptr && (flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0)
            ::dlopen(ze_posix::NativePath(moduleName).c_str(), RTLD_LAZY | RTLD_NOLOAD);
        *module = found;
        return TRUE;
    }
    Dl_info info;
    struct link_map* map = nullptr;
    if (moduleName == nullptr || ::dladdr1(moduleName, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 ||
        map == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    const bool isProgram = map->l_name == nullptr || map->l_name[0] == '\0';
    if (!isProgram && (flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0)
        ::dlopen(map->l_name, RTLD_LAZY | RTLD_NOLOAD | ((flags & GET_MODULE_HANDLE_EX_FLAG_PIN) ? RTLD_NODELETE : 0));
    *module = map;
    return TRUE;
}

// Paths are built in strings; an allocation failure becomes the Windows error number.
template <typename Result, typename Work>
Result Guarded(Result failure, Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failure;
    }
}

}  // namespace

HMODULE LoadLibraryA(LPCSTR fileName) { return LoadLibraryExA(fileName, nullptr, 0); }

HMODULE LoadLibraryExA(LPCSTR fileName, HANDLE, DWORD) {
    return Guarded<HMODULE>(nullptr, [&] { return LoadLibraryExUnguarded(fileName); });
}

BOOL FreeLibrary(HMODULE module) {
    if (!IsLoadedModule(module)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (::dlclose(module) != 0) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR procName) {
    if (!IsLoadedModule(module)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    // Export ordinals (names below 0x10000) do not exist for shared objects.
    if (procName == nullptr || reinterpret_cast<uintptr_t>(procName) < 0x10000) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    ::dlerror();
    void* symbol = ::dlsym(module, procName);
    if (symbol == nullptr) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(symbol);
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR fileName, DWORD size) {
    return Guarded<DWORD>(0, [&] { return GetModuleFileNameUnguarded(module, fileName, size); });
}

HMODULE GetModuleHandleA(LPCSTR moduleName) {
    return Guarded<HMODULE>(nullptr, [&] { return GetModuleHandleUnguarded(moduleName); });
}

BOOL GetModuleHandleExA(DWORD flags, LPCSTR moduleName, HMODULE* module) {
    return Guarded<BOOL>(FALSE, [&] { return GetModuleHandleExUnguarded(flags, moduleName, module); });
}
