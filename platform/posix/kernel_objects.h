// Kernel objects behind HANDLEs on POSIX. A HANDLE points at a HandleBox; duplicates get their own
// box that shares the object, so closing one handle leaves the other working, as on Windows.
#pragma once

#include <memory>
#include <string>

#include "platform/win32_types.h"

namespace ze_posix {

struct KernelObject {
    virtual ~KernelObject() = default;
};

struct FileObject : KernelObject {
    int fd = -1;
    bool canRead = false;
    bool canWrite = false;
    std::string path;
    ~FileObject() override;
};

struct MappingObject : KernelObject {
    int fd = -1;  // own duplicate of the file's descriptor
    bool writable = false;
    uint64_t size = 0;
    ~MappingObject() override;
};

HANDLE NewHandle(std::shared_ptr<KernelObject> object);
// The object behind a live handle, or null (with ERROR_INVALID_HANDLE set) when the handle is not one.
std::shared_ptr<KernelObject> LookupHandle(HANDLE handle);
bool ReleaseHandle(HANDLE handle);

template <typename T>
std::shared_ptr<T> LookupAs(HANDLE handle) {
    return std::dynamic_pointer_cast<T>(LookupHandle(handle));
}

// Maps errno to the nearest Win32 error number.
DWORD Win32ErrorFromErrno(int err);

// Windows paths on POSIX: backslashes become slashes; a leading drive letter is dropped.
std::string NativePath(const char* path);

}  // namespace ze_posix
