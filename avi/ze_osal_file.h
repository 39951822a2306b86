// ZeOSAL: the small operating-system layer through which the AVI parser reads its file.
// CZeFile reads either with ReadFile/SetFilePointer or, when opened with FILE_FLAG_NO_BUFFERING,
// by copying out of a memory-mapped view kept by CZeFileView.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace ZeOSAL {

// Keeps at most one mapped view of a file open at a time.
class CZeFileView {
public:
    CZeFileView();
    ~CZeFileView();
    CZeFileView(const CZeFileView&) = delete;
    CZeFileView& operator=(const CZeFileView&) = delete;

    // All three return a Win32 error number, 0 on success.
    uint32_t Attach(HANDLE file);
    uint32_t MapRange(const uint8_t** data, uint32_t* size, uint64_t offset);
    uint32_t Reset();

    uint64_t GetFileSize() const { return m_fileSize; }
    bool IsReadOnlyMapping() const { return m_readOnlyMapping != 0; }
    uint32_t GetGranularity() const { return m_granularity; }
    uint32_t GetMappedLength() const { return m_mappedLength; }

private:
    bool ViewCovers(uint64_t viewStart, uint32_t length) const;

    uint64_t m_viewPosition = 0;  // zeroed on reset, on attach and before every mapping; otherwise unused
    uint32_t m_granularity = 0;
    uint32_t m_mappedLength = 0;
    HANDLE m_file = INVALID_HANDLE_VALUE;
    HANDLE m_mapping = INVALID_HANDLE_VALUE;
    uint8_t* m_viewBase = nullptr;
    CRITICAL_SECTION m_lock;  // created and deleted, never entered by this layer
    uint64_t m_fileSize = 0;
    uint32_t m_readOnlyMapping = 0;
    uint32_t m_granularityIs64K = 0;

    // Where the current view starts in the file and how many bytes it spans, so that a read that
    // falls inside the view already mapped is served without a new mapping.
    uint64_t m_viewStart = 0;
    uint64_t m_viewBytes = 0;
};

class CZeFile {
public:
    CZeFile();
    virtual ~CZeFile();
    CZeFile(const CZeFile&) = delete;
    CZeFile& operator=(const CZeFile&) = delete;

    // Returns E_FAIL when CreateFileA fails, else the attach result (0 or a Win32 error number).
    int32_t Open(const char* path, uint32_t access, uint32_t share, LPSECURITY_ATTRIBUTES security,
                 uint32_t disposition, uint32_t flags, HANDLE templateFile);
    int32_t Close();
    bool IsOpen() const { return m_file != INVALID_HANDLE_VALUE; }
    int32_t Read(void* buffer, uint64_t* count, uint64_t* bytesRead, LPOVERLAPPED overlapped);
    // Returns the low 32 bits of the new position; 0xFFFFFFFF means failure.
    uint32_t Seek(int32_t distanceLow, int32_t* distanceHigh, uint32_t method);

    uint64_t GetPosition() const { return m_position; }
    uint64_t GetFileSize() const { return m_view.GetFileSize(); }
    const CZeFileView& GetView() const { return m_view; }

private:
    int32_t MappedRead(void* buffer, uint64_t* count, uint64_t* bytesRead);
    int32_t PlainRead(void* buffer, uint64_t* count, uint64_t* bytesRead, LPOVERLAPPED overlapped);
    uint32_t MappedSeek(int32_t distanceLow, int32_t* distanceHigh, uint32_t method);

    CZeFileView m_view;
    HANDLE m_file = INVALID_HANDLE_VALUE;
    uint32_t m_flags = 0;
    uint64_t m_position = 0;
};

// ZeAvi::FourCC (ze_avi_fourcc.h): first character in the lowest byte, each widened as a signed byte.
uint32_t MakeFourCC(const char* text);
// Bytes 0-1 from the first two characters of low, bytes 2-3 from the first two of high.
uint32_t MakeFourCCFromPair(const char* low, const char* high);
// destination must hold MAX_PATH characters; name is appended without a bound check.
void AppendPath(char* destination, const char* directory, const char* name);

}  // namespace ZeOSAL
