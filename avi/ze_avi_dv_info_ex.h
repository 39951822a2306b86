// CZeAviDVInfoEx: the DV format information of an interleaved ('iavs') DV stream, a block of
// 32-bit words taken from the stream's 'strf' chunk. The meaning of the individual words belongs to
// the DV code; the first eight are the DVINFO packs (AAuxSrc, AAuxCtl, AAuxSrc1, AAuxCtl1, VAuxSrc,
// VAuxCtl, two reserved words).
//
// The record proper is 18 words, but the format record's copy into it takes 19 words, so the
// storage has room for 19: the 19th word is storage for that copy only.
#pragma once

#include <cstdint>

#include "platform/win32.h"

struct ze_avi_dv_info_ex {
    static constexpr int kWordCount = 18;    // words of the record proper
    static constexpr int kStoredWords = 19;  // words the format record copies in
    uint32_t dwWords[kStoredWords] = {};
};

class CZeAviDVInfoEx : public ze_avi_dv_info_ex {
public:
    CZeAviDVInfoEx() { Reset(); }
    CZeAviDVInfoEx(const CZeAviDVInfoEx&) = default;
    CZeAviDVInfoEx& operator=(const CZeAviDVInfoEx&) = default;
    virtual ~CZeAviDVInfoEx() = default;

    // All words 0; returns 0.
    virtual HRESULT Reset();

    // Index 0..18; another index reads 0 and is ignored by the setter.
    uint32_t GetWord(int32_t index) const;
    void SetWord(int32_t index, uint32_t value);
    uint32_t* Words() { return dwWords; }
    const uint32_t* Words() const { return dwWords; }
};
