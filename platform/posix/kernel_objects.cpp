#include "platform/posix/kernel_objects.h"

#include <cerrno>
#include <mutex>
#include <unistd.h>
#include <unordered_set>

#include "platform/win32_files.h"

namespace ze_posix {

namespace {

struct HandleBox {
    std::shared_ptr<KernelObject> object;
};

struct HandleTable {
    std::mutex mutex;
    std::unordered_set<HandleBox*> live;
};

HandleTable& Table() {
    // Lives as long as the module that holds it, so unloading the module releases it too.
    static HandleTable table;
    return table;
}

}  // namespace

FileObject::~FileObject() {
    if (fd >= 0) ::close(fd);
}

MappingObject::~MappingObject() {
    if (fd >= 0) ::close(fd);
}

HANDLE NewHandle(std::shared_ptr<KernelObject> object) {
    auto* box = new HandleBox{std::move(object)};
    HandleTable& t = Table();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.live.insert(box);
    return box;
}

std::shared_ptr<KernelObject> LookupHandle(HANDLE handle) {
    HandleTable& t = Table();
    {
        std::lock_guard<std::mutex> lock(t.mutex);
        auto* box = static_cast<HandleBox*>(handle);
        if (handle != nullptr && handle != INVALID_HANDLE_VALUE && t.live.count(box)) return box->object;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

bool ReleaseHandle(HANDLE handle) {
    HandleTable& t = Table();
    HandleBox* box = static_cast<HandleBox*>(handle);
    {
        std::lock_guard<std::mutex> lock(t.mutex);
        if (handle == nullptr || handle == INVALID_HANDLE_VALUE || t.live.erase(box) == 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
    }
    delete box;
    return true;
}

DWORD Win32ErrorFromErrno(int err) {
    switch (err) {
        case 0: return ERROR_SUCCESS;
        case ENOENT: return ERROR_FILE_NOT_FOUND;
        case ENOTDIR: return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EISDIR:
        case EROFS: return ERROR_ACCESS_DENIED;
        case EBADF: return ERROR_INVALID_HANDLE;
        case EEXIST: return ERROR_FILE_EXISTS;
        case ENOMEM: return ERROR_NOT_ENOUGH_MEMORY;
        case EMFILE:
        case ENFILE: return ERROR_TOO_MANY_OPEN_FILES;
        case EINVAL: return ERROR_INVALID_PARAMETER;
        case EBUSY:
        case ETXTBSY: return ERROR_SHARING_VIOLATION;
        default: return ERROR_INVALID_PARAMETER;
    }
}

std::string NativePath(const char* path) {
    std::string out = path ? path : "";
    if (out.size() >= 2 && out[1] == ':' && ((out[0] >= 'A' && out[0] <= 'Z') || (out[0] >= 'a' && out[0] <= 'z')))
        out.erase(0, 2);
    for (char& c : out)
        if (c == '\\') c = '/';
    return out;
}

}  // namespace ze_posix
