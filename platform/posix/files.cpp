// CreateFileA, ReadFile, SetFilePointer and friends on POSIX descriptors, with Windows results.
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/kernel_objects.h"
#include "platform/win32_files.h"

using ze_posix::FileObject;

namespace {

thread_local DWORD g_lastError = 0;

DWORD FailWithErrno() {
    const DWORD e = ze_posix::Win32ErrorFromErrno(errno);
    SetLastError(e);
    return e;
}

void ToFileTime(const struct timespec& ts, FILETIME* ft) {
    // 100-ns intervals since 1601-01-01.
    const uint64_t t = (static_cast<uint64_t>(ts.tv_sec) + 11644473600ull) * 10000000ull +
                       static_cast<uint64_t>(ts.tv_nsec) / 100u;
    ft->dwLowDateTime = static_cast<DWORD>(t);
    ft->dwHighDateTime = static_cast<DWORD>(t >> 32);
}

}  // namespace

DWORD GetLastError() { return g_lastError; }
void SetLastError(DWORD error) { g_lastError = error; }

HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD flags, HANDLE templateFile) {
    (void)share;
    (void)security;
    (void)flags;
    (void)templateFile;
    if (path == nullptr || *path == '\0') {
        SetLastError(path ? ERROR_PATH_NOT_FOUND : ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const bool wantRead = (access & GENERIC_READ) != 0;
    const bool wantWrite = (access & GENERIC_WRITE) != 0;
    int oflags = O_CLOEXEC;
    if (wantRead && wantWrite)
        oflags |= O_RDWR;
    else if (wantWrite)
        oflags |= O_WRONLY;
    else
        oflags |= O_RDONLY;
    switch (disposition) {
        case CREATE_NEW: oflags |= O_CREAT | O_EXCL; break;
        case CREATE_ALWAYS: oflags |= O_CREAT | O_TRUNC; break;
        case OPEN_EXISTING: break;
        case OPEN_ALWAYS: oflags |= O_CREAT; break;
        case TRUNCATE_EXISTING:
            if (!wantWrite) {
                SetLastError(ERROR_INVALID_PARAMETER);
                return INVALID_HANDLE_VALUE;
            }
            oflags |= O_TRUNC;
            break;
        default: SetLastError(ERROR_INVALID_PARAMETER); return INVALID_HANDLE_VALUE;
    }
    const std::string native = ze_posix::NativePath(path);
    const int fd = ::open(native.c_str(), oflags, 0666);
    if (fd < 0) {
        FailWithErrno();
        return INVALID_HANDLE_VALUE;
    }
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        // Windows refuses to open a folder as a file.
        ::close(fd);
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    auto file = std::make_shared<FileObject>();
    file->fd = fd;
    file->canRead = wantRead;
    file->canWrite = wantWrite;
    file->path = native;
    SetLastError(ERROR_SUCCESS);
    return ze_posix::NewHandle(file);
}

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD toRead, LPDWORD read, LPOVERLAPPED overlapped) {
    if (read) *read = 0;
    auto file = ze_posix::LookupAs<FileObject>(handle);
    if (!file) return FALSE;
    if (!file->canRead) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (buffer == nullptr && toRead > 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    uint64_t offset = overlapped ? (static_cast<uint64_t>(overlapped->OffsetHigh) << 32 | overlapped->Offset) : 0;
    DWORD done = 0;
    while (done < toRead) {
        const ssize_t n = overlapped ? ::pread(file->fd, static_cast<char*>(buffer) + done, toRead - done,
                                               static_cast<off_t>(offset + done))
                                     : ::read(file->fd, static_cast<char*>(buffer) + done, toRead - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            FailWithErrno();
            if (read) *read = done;
            return FALSE;
        }
        if (n == 0) break;
        done += static_cast<DWORD>(n);
    }
    if (read) *read = done;
    return TRUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD toWrite, LPDWORD written, LPOVERLAPPED overlapped) {
    if (written) *written = 0;
    auto file = ze_posix::LookupAs<FileObject>(handle);
    if (!file) return FALSE;
    if (!file->canWrite) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    uint64_t offset = overlapped ? (static_cast<uint64_t>(overlapped->OffsetHigh) << 32 | overlapped->Offset) : 0;
    DWORD done = 0;
    while (done < toWrite) {
        const ssize_t n = overlapped ? ::pwrite(file->fd, static_cast<const char*>(buffer) + done, toWrite - done,
                                                static_cast<off_t>(offset + done))
                                     : ::write(file->fd, static_cast<const char*>(buffer) + done, toWrite - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            FailWithErrno();
            if (written) *written = done;
            return FALSE;
        }
        done += static_cast<DWORD>(n);
    }
    if (written) *written = done;
    return TRUE;
}

DWORD SetFilePointer(HANDLE handle, LONG distanceLow, PLONG distanceHigh, DWORD method) {
    auto file = ze_posix::LookupAs<FileObject>(handle);
    if (!file) return INVALID_SET_FILE_POINTER;
    int64_t distance = distanceHigh
                           ? static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(*distanceHigh)) << 32) |
                                                  static_cast<uint32_t>(distanceLow))
                           : static_cast<int64_t>(distanceLow);
    int64_t base = 0;
    if (method == FILE_CURRENT) {
        base = ::lseek(file->fd, 0, SEEK_CUR);
    } else if (method == FILE_END) {
        struct stat st {};
        if (::fstat(file->fd, &st) != 0) {
            FailWithErrno();
            return INVALID_SET_FILE_POINTER;
        }
        base = st.st_size;
    } else if (method != FILE_BEGIN) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    const int64_t target = base + distance;
    if (target < 0) {
        SetLastError(ERROR_NEGATIVE_SEEK);
        return INVALID_SET_FILE_POINTER;
    }
    if (!distanceHigh && target > 0xFFFFFFFFll) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    if (::lseek(file->fd, static_cast<off_t>(target), SEEK_SET) < 0) {
        FailWithErrno();
        return INVALID_SET_FILE_POINTER;
    }
    if (distanceHigh) *distanceHigh = static_cast<LONG>(static_cast<uint64_t>(target) >> 32);
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(target);
}

BOOL GetFileInformationByHandle(HANDLE handle, LPBY_HANDLE_FILE_INFORMATION info) {
    auto file = ze_posix::LookupAs<FileObject>(handle);
    if (!file) return FALSE;
    if (!info) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    struct stat st {};
    if (::fstat(file->fd, &st) != 0) {
        FailWithErrno();
        return FALSE;
    }
    *info = BY_HANDLE_FILE_INFORMATION{};
    info->dwFileAttributes = (st.st_mode & S_IWUSR) ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_READONLY;
    ToFileTime(st.st_ctim, &info->ftCreationTime);
    ToFileTime(st.st_atim, &info->ftLastAccessTime);
    ToFileTime(st.st_mtim, &info->ftLastWriteTime);
    info->dwVolumeSerialNumber = static_cast<DWORD>(st.st_dev);
    info->nFileSizeHigh = static_cast<DWORD>(static_cast<uint64_t>(st.st_size) >> 32);
    info->nFileSizeLow = static_cast<DWORD>(st.st_size);
    info->nNumberOfLinks = static_cast<DWORD>(st.st_nlink);
    info->nFileIndexHigh = static_cast<DWORD>(static_cast<uint64_t>(st.st_ino) >> 32);
    info->nFileIndexLow = static_cast<DWORD>(st.st_ino);
    return TRUE;
}

DWORD GetFileSize(HANDLE handle, LPDWORD sizeHigh) {
    BY_HANDLE_FILE_INFORMATION info;
    if (!GetFileInformationByHandle(handle, &info)) return 0xFFFFFFFFu;
    if (sizeHigh) *sizeHigh = info.nFileSizeHigh;
    SetLastError(ERROR_SUCCESS);
    return info.nFileSizeLow;
}

BOOL CloseHandle(HANDLE handle) { return ze_posix::ReleaseHandle(handle) ? TRUE : FALSE; }

BOOL DeleteFileA(LPCSTR path) {
    if (!path) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (::unlink(ze_posix::NativePath(path).c_str()) != 0) {
        FailWithErrno();
        return FALSE;
    }
    return TRUE;
}

HANDLE GetCurrentProcess() { return INVALID_HANDLE_VALUE; }  // the pseudo-handle, -1, as on Windows

BOOL DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess, HANDLE* target, DWORD access,
                     BOOL inherit, DWORD options) {
    (void)access;
    (void)inherit;
    if (sourceProcess != GetCurrentProcess() || targetProcess != GetCurrentProcess()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    auto object = ze_posix::LookupHandle(source);
    if (!object) return FALSE;
    if (target) *target = ze_posix::NewHandle(object);
    if (options & DUPLICATE_CLOSE_SOURCE) ze_posix::ReleaseHandle(source);
    return TRUE;
}
