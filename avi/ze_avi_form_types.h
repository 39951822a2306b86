// CZeAviFormTypes: the base of every chunk record. It remembers where a chunk lies in the file
// (offset, size, FOURCC) and can print itself as text for diagnostics.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "platform/win32.h"

struct ze_avi_formtypes {
    uint32_t dwOffset = 0;  // file offset of the chunk
    uint32_t dwSize = 0;    // size of the chunk's data (for a format record: size of its block)
    uint32_t dwID = 0;      // the chunk's FOURCC
};

class CZeAviFormTypes : protected ze_avi_formtypes {
public:
    CZeAviFormTypes() = default;
    CZeAviFormTypes(const CZeAviFormTypes&) = default;
    CZeAviFormTypes& operator=(const CZeAviFormTypes&) = default;
    virtual ~CZeAviFormTypes() = default;

    // Zeroes the record's own fields; derived classes clear theirs and then call this. Returns 0.
    virtual HRESULT Reset();
    virtual std::string Dump() const;
    virtual std::ostream& Print(std::ostream& out) const;

    uint32_t GetOffset() const { return dwOffset; }
    void SetOffset(uint32_t value) { dwOffset = value; }
    uint32_t GetSize() const { return dwSize; }
    void SetSize(uint32_t value) { dwSize = value; }
    uint32_t GetID() const { return dwID; }
    void SetID(uint32_t value) { dwID = value; }

    // Copies the three base fields from another record.
    void CopyBase(const CZeAviFormTypes& other) { static_cast<ze_avi_formtypes&>(*this) = other; }

protected:
    // The base lines of every dump: banner and the three fields.
    std::string DumpBase() const;
};

namespace ZeAvi {
// One dump line: `format` holds one "%ld", which receives the value as the signed 32-bit number
// that a 32-bit Windows "%ld" prints; the line ends with "\n".
std::string DumpLine(const char* format, uint32_t value);
}  // namespace ZeAvi
