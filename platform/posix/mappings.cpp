// File mappings and views on mmap, with the argument rules and error numbers of Windows.
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

#include "platform/posix/kernel_objects.h"
#include "platform/win32_files.h"

using ze_posix::FileObject;
using ze_posix::MappingObject;

namespace {

constexpr DWORD kWindowsGranularity = 65536;
DWORD g_granularity = kWindowsGranularity;

constexpr DWORD ERROR_INVALID_ADDRESS = 487;

// Live views: base address -> mapped length, so that UnmapViewOfFile needs only the base.
struct ViewTable {
    std::mutex mutex;
    std::unordered_map<const void*, size_t> views;
};

ViewTable& Views() {
    static ViewTable table;
    return table;
}

}  // namespace

void ZeSetAllocationGranularityForTesting(DWORD granularity) {
    g_granularity = granularity ? granularity : kWindowsGranularity;
}

void GetSystemInfo(LPSYSTEM_INFO info) {
    if (!info) return;
    *info = SYSTEM_INFO{};
    info->wProcessorArchitecture = 0;
    info->dwPageSize = static_cast<DWORD>(::sysconf(_SC_PAGESIZE));
    info->lpMinimumApplicationAddress = reinterpret_cast<LPVOID>(0x10000);
    info->lpMaximumApplicationAddress = reinterpret_cast<LPVOID>(0x7FFEFFFF);
    const long cpus = ::sysconf(_SC_NPROCESSORS_ONLN);
    info->dwNumberOfProcessors = cpus > 0 ? static_cast<DWORD>(cpus) : 1;
    info->dwActiveProcessorMask = 1;
    info->dwAllocationGranularity = g_granularity;
}

HANDLE CreateFileMappingA(HANDLE handle, LPSECURITY_ATTRIBUTES security, DWORD protect, DWORD maxSizeHigh,
                          DWORD maxSizeLow, LPCSTR name) {
    (void)security;
    (void)name;
    auto file = ze_posix::LookupAs<FileObject>(handle);
    if (!file) return nullptr;  // pagefile-backed sections are not offered here
    const bool writable = (protect & 0xFF) == PAGE_READWRITE;
    if (!writable && (protect & 0xFF) != PAGE_READONLY) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (!file->canRead || (writable && !file->canWrite)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    struct stat st {};
    if (::fstat(file->fd, &st) != 0) {
        SetLastError(ze_posix::Win32ErrorFromErrno(errno));
        return nullptr;
    }
    const uint64_t fileSize = static_cast<uint64_t>(st.st_size);
    uint64_t size = (static_cast<uint64_t>(maxSizeHigh) << 32) | maxSizeLow;
    if (size == 0) {
        if (fileSize == 0) {
            SetLastError(ERROR_FILE_INVALID);
            return nullptr;
        }
        size = fileSize;
    }
    if (size > fileSize) {
        // Windows grows the file for a writable section and refuses a larger read-only one.
        if (!writable) {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        if (::ftruncate(file->fd, static_cast<off_t>(size)) != 0) {
            SetLastError(ze_posix::Win32ErrorFromErrno(errno));
            return nullptr;
        }
    }
    auto mapping = std::make_shared<MappingObject>();
    mapping->fd = ::fcntl(file->fd, F_DUPFD_CLOEXEC, 0);
    if (mapping->fd < 0) {
        SetLastError(ze_posix::Win32ErrorFromErrno(errno));
        return nullptr;
    }
    mapping->writable = writable;
    mapping->size = size;
    SetLastError(ERROR_SUCCESS);
    return ze_posix::NewHandle(mapping);
}

LPVOID MapViewOfFile(HANDLE handle, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T length) {
    auto mapping = ze_posix::LookupAs<MappingObject>(handle);
    if (!mapping) return nullptr;
    const bool wantWrite = (access & FILE_MAP_WRITE) != 0;
    if (wantWrite && !mapping->writable) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const uint64_t offset = (static_cast<uint64_t>(offsetHigh) << 32) | offsetLow;
    if (offset % g_granularity != 0) {
        SetLastError(ERROR_MAPPED_ALIGNMENT);
        return nullptr;
    }
    if (offset >= mapping->size) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    uint64_t bytes = length ? static_cast<uint64_t>(length) : mapping->size - offset;
    if (offset + bytes > mapping->size) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    void* base = ::mmap(nullptr, static_cast<size_t>(bytes), wantWrite ? PROT_READ | PROT_WRITE : PROT_READ,
                        MAP_SHARED, mapping->fd, static_cast<off_t>(offset));
    if (base == MAP_FAILED) {
        SetLastError(errno == ENOMEM ? ERROR_NOT_ENOUGH_MEMORY : ze_posix::Win32ErrorFromErrno(errno));
        return nullptr;
    }
    ViewTable& v = Views();
    std::lock_guard<std::mutex> lock(v.mutex);
    v.views[base] = static_cast<size_t>(bytes);
    SetLastError(ERROR_SUCCESS);
    return base;
}

BOOL UnmapViewOfFile(LPCVOID base) {
    size_t bytes = 0;
    {
        ViewTable& v = Views();
        std::lock_guard<std::mutex> lock(v.mutex);
        auto it = v.views.find(base);
        if (it == v.views.end()) {
            SetLastError(ERROR_INVALID_ADDRESS);
            return FALSE;
        }
        bytes = it->second;
        v.views.erase(it);
    }
    ::munmap(const_cast<void*>(base), bytes);
    return TRUE;
}
