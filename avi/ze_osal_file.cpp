#include "avi/ze_osal_file.h"

#include <algorithm>
#include <cstring>

#include "avi/ze_avi_fourcc.h"

namespace ZeOSAL {

namespace {

bool IsNoHandle(HANDLE h) { return h == INVALID_HANDLE_VALUE || h == nullptr; }

uint32_t CurrentGranularity() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwAllocationGranularity;
}

// Views are mapped at least this large so that the parser's many small header reads and sequential
// frame reads are served from the view already mapped instead of a fresh mapping each time.
constexpr uint64_t kMinimumWindow = 8u << 20;

}  // namespace

// ---------------------------------------------------------------------------------------------
// CZeFileView

CZeFileView::CZeFileView() {
    InitializeCriticalSection(&m_lock);
    m_granularity = CurrentGranularity();
    m_granularityIs64K = m_granularity == 0x10000 ? 1 : 0;
}

CZeFileView::~CZeFileView() {
    Reset();
    DeleteCriticalSection(&m_lock);
}

uint32_t CZeFileView::Attach(HANDLE file) {
    if (file == INVALID_HANDLE_VALUE) return ERROR_INVALID_HANDLE;
    if (m_file != INVALID_HANDLE_VALUE) {
        const uint32_t reset = Reset();
        if (static_cast<int32_t>(reset) < 0) return GetLastError();
    }
    BY_HANDLE_FILE_INFORMATION info;
    if (!GetFileInformationByHandle(file, &info)) return GetLastError();
    m_fileSize = (static_cast<uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    m_viewPosition = 0;
    // A mapping of maximum size 0 cannot be made, so an empty file asks for one byte.
    if (m_fileSize == 0) m_fileSize = 1;

    SetLastError(ERROR_SUCCESS);
    const DWORD sizeHigh = static_cast<DWORD>(m_fileSize >> 32);
    const DWORD sizeLow = static_cast<DWORD>(m_fileSize);
    // The read-write attempt comes first; a handle opened for reading only falls to the read-only one.
    m_mapping = CreateFileMappingA(file, nullptr, PAGE_READWRITE, sizeHigh, sizeLow, nullptr);
    if (IsNoHandle(m_mapping)) {
        m_mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, sizeHigh, sizeLow, nullptr);
        if (IsNoHandle(m_mapping)) {
            m_mapping = INVALID_HANDLE_VALUE;
            const DWORD error = GetLastError();
            return error ? error : ERROR_ACCESS_DENIED;
        }
        m_readOnlyMapping = 1;
    }
    HANDLE duplicate = INVALID_HANDLE_VALUE;
    if (DuplicateHandle(GetCurrentProcess(), file, GetCurrentProcess(), &duplicate, 0, FALSE,
                        DUPLICATE_SAME_ACCESS)) {
        m_file = duplicate;
        return 0;
    }
    const DWORD error = GetLastError();
    Reset();
    return error;
}

bool CZeFileView::ViewCovers(uint64_t viewStart, uint32_t length) const {
    return m_viewBase != nullptr && length > 0 && viewStart >= m_viewStart &&
           viewStart + length <= m_viewStart + m_viewBytes;
}

uint32_t CZeFileView::MapRange(const uint8_t** data, uint32_t* size, uint64_t offset) {
    if (size == nullptr || data == nullptr || offset == UINT64_MAX) return ERROR_INVALID_PARAMETER;
    if (IsNoHandle(m_mapping) || IsNoHandle(m_file)) return ERROR_INVALID_HANDLE;

    m_viewPosition = 0;
    // A start past the end is refused before offset and size are added, so that an offset near
    // 2^64 cannot wrap around into a range inside the file.
    if (offset > m_fileSize) {
        if (m_viewBase) {
            UnmapViewOfFile(m_viewBase);
            m_viewBase = nullptr;
        }
        return ERROR_INVALID_PARAMETER;
    }
    const uint64_t end = offset + *size;
    uint64_t excess = 0;
    // A read that starts exactly at the end of the file is allowed; all of it is excess.
    if (end > m_fileSize) excess = end - m_fileSize;

    uint64_t viewStart = 0;
    uint64_t delta = 0;
    if (offset == 0) {
        viewStart = 0;
    } else if (m_granularityIs64K) {
        viewStart = offset & ~static_cast<uint64_t>(0xFFFF);
        delta = offset & 0xFFFF;
    } else {
        viewStart = (offset / m_granularity) * m_granularity;
        delta = offset - viewStart;
    }

    SetLastError(ERROR_SUCCESS);
    const uint32_t length = static_cast<uint32_t>((*size - excess) + delta);
    m_mappedLength = length;

    if (!ViewCovers(viewStart, length)) {
        if (m_viewBase) {
            UnmapViewOfFile(m_viewBase);
            m_viewBase = nullptr;
        }
        void* base = nullptr;
        uint64_t bytes = length;
        if (length > 0) {
            // Map a wider window when the file has room for it; fall back to the exact range.
            const uint64_t room = m_fileSize - viewStart;
            const uint64_t wide = std::min<uint64_t>(room, std::max<uint64_t>(kMinimumWindow, length));
            if (wide > length && wide <= SIZE_MAX) {
                base = MapViewOfFile(m_mapping, FILE_MAP_READ, static_cast<DWORD>(viewStart >> 32),
                                     static_cast<DWORD>(viewStart), static_cast<SIZE_T>(wide));
                if (base) bytes = wide;
            }
        }
        if (!base) {
            SetLastError(ERROR_SUCCESS);
            base = MapViewOfFile(m_mapping, FILE_MAP_READ, static_cast<DWORD>(viewStart >> 32),
                                 static_cast<DWORD>(viewStart), length);
            if (base && length == 0) bytes = m_fileSize - viewStart;
        }
        if (!base) {
            *size = 0;
            m_viewBytes = 0;
            return GetLastError();
        }
        m_viewBase = static_cast<uint8_t*>(base);
        m_viewStart = viewStart;
        m_viewBytes = bytes;
    }
    *data = m_viewBase + (viewStart - m_viewStart) + delta;
    *size = static_cast<uint32_t>(*size - excess);
    return 0;
}

uint32_t CZeFileView::Reset() {
    const uint32_t granularity = CurrentGranularity();
    SetLastError(ERROR_SUCCESS);
    if (m_viewBase) {
        if (!UnmapViewOfFile(m_viewBase)) return GetLastError();
        m_viewBase = nullptr;
        m_viewBytes = 0;
    }
    if (!IsNoHandle(m_mapping)) {
        if (!CloseHandle(m_mapping)) return GetLastError();
    }
    m_mapping = INVALID_HANDLE_VALUE;
    if (!IsNoHandle(m_file)) {
        if (!CloseHandle(m_file)) return GetLastError();
    }
    m_file = INVALID_HANDLE_VALUE;
    m_viewPosition = 0;
    m_fileSize = 0;
    m_readOnlyMapping = 0;
    m_granularity = granularity;
    m_granularityIs64K = granularity == 0x10000 ? 1 : 0;
    return 0;
}

// ---------------------------------------------------------------------------------------------
// CZeFile

CZeFile::CZeFile() = default;

CZeFile::~CZeFile() {
    m_view.Reset();
    // The owner normally closes first; a handle still open here is released rather than leaked.
    if (m_file != INVALID_HANDLE_VALUE) CloseHandle(m_file);
}

int32_t CZeFile::Open(const char* path, uint32_t access, uint32_t share, LPSECURITY_ATTRIBUTES security,
                      uint32_t disposition, uint32_t flags, HANDLE templateFile) {
    m_flags = flags;
    HANDLE handle = CreateFileA(path, access, share, security, disposition, flags, templateFile);
    if (handle == INVALID_HANDLE_VALUE) return E_FAIL;
    // Opening over an open file replaces it; the earlier handle is released rather than leaked.
    if (m_file != INVALID_HANDLE_VALUE) CloseHandle(m_file);
    m_file = handle;
    return static_cast<int32_t>(m_view.Attach(handle));
}

int32_t CZeFile::Close() {
    const int32_t reset = static_cast<int32_t>(m_view.Reset());
    if (reset < 0) return reset;
    if (CloseHandle(m_file)) {
        m_file = INVALID_HANDLE_VALUE;
        m_flags = 0;
        return 0;
    }
    // A failed close is passed over: the caller sees the result of the view reset.
    return reset;
}

int32_t CZeFile::Read(void* buffer, uint64_t* count, uint64_t* bytesRead, LPOVERLAPPED overlapped) {
    if (m_flags & FILE_FLAG_NO_BUFFERING) return MappedRead(buffer, count, bytesRead);
    return PlainRead(buffer, count, bytesRead, overlapped);
}

uint32_t CZeFile::Seek(int32_t distanceLow, int32_t* distanceHigh, uint32_t method) {
    if (m_flags & FILE_FLAG_NO_BUFFERING) return MappedSeek(distanceLow, distanceHigh, method);
    // LONG is 32 bits everywhere but not always the same C type as int32_t: pass the high part through one.
    LONG high = distanceHigh ? *distanceHigh : 0;
    const DWORD result = SetFilePointer(m_file, distanceLow, distanceHigh ? &high : nullptr, method);
    if (distanceHigh) *distanceHigh = high;
    return result;
}

int32_t CZeFile::MappedRead(void* buffer, uint64_t* count, uint64_t* bytesRead) {
    if (buffer == nullptr || m_file == INVALID_HANDLE_VALUE) return E_POINTER;
    if (count == nullptr || *count == 0) return 0;
    const uint8_t* data = nullptr;
    uint32_t size = static_cast<uint32_t>(*count);
    if (m_view.MapRange(&data, &size, m_position) == 0 && data != nullptr) {
        std::memcpy(buffer, data, size);
        m_position += size;
        if (bytesRead) *bytesRead = size;
        return 0;
    }
    if (bytesRead) *bytesRead = 0;
    return E_FAIL;
}

int32_t CZeFile::PlainRead(void* buffer, uint64_t* count, uint64_t* bytesRead, LPOVERLAPPED overlapped) {
    DWORD n = 0;
    const BOOL ok = ReadFile(m_file, buffer, count ? static_cast<DWORD>(*count) : 0, &n, overlapped);
    if (ok == TRUE) {
        if (bytesRead) *bytesRead = n;
        return 0;
    }
    if (bytesRead) *bytesRead = 0;
    return E_FAIL;
}

uint32_t CZeFile::MappedSeek(int32_t distanceLow, int32_t* distanceHigh, uint32_t method) {
    if (distanceHigh != nullptr) {
        uint32_t low = static_cast<uint32_t>(m_position);
        uint32_t high = static_cast<uint32_t>(m_position >> 32);
        if (method == FILE_BEGIN) {
            low = static_cast<uint32_t>(distanceLow);
            high = static_cast<uint32_t>(*distanceHigh);
        } else if (method == FILE_CURRENT) {
            // Two separate 32-bit additions: the low word does not carry into the high word.
            low += static_cast<uint32_t>(distanceLow);
            high += static_cast<uint32_t>(*distanceHigh);
        }
        m_position = (static_cast<uint64_t>(high) << 32) | low;
    }
    return static_cast<uint32_t>(m_position);
}

// ---------------------------------------------------------------------------------------------
// Free helpers

uint32_t MakeFourCC(const char* text) { return ZeAvi::FourCC(text); }

uint32_t MakeFourCCFromPair(const char* low, const char* high) {
    const uint8_t b0 = static_cast<uint8_t>(low[0]);
    const uint8_t b1 = static_cast<uint8_t>(low[1]);
    const uint8_t b2 = static_cast<uint8_t>(high[0]);
    const uint8_t b3 = static_cast<uint8_t>(high[1]);
    return static_cast<uint32_t>(b0) | static_cast<uint32_t>(b1) << 8 | static_cast<uint32_t>(b2) << 16 |
           static_cast<uint32_t>(b3) << 24;
}

void AppendPath(char* destination, const char* directory, const char* name) {
    std::strncpy(destination, directory ? directory : "", MAX_PATH);
    destination[MAX_PATH - 1] = '\0';
    const size_t length = std::strlen(destination);
    if (length == 0 || destination[length - 1] != '\\') std::strcat(destination, "\\");
    std::strcat(destination, name ? name : "");
}

}  // namespace ZeOSAL
