// CZeAviStreamFormat: one stream's format, the body of a 'strf' chunk. It owns a format block whose
// kind follows the format type: 1 a BITMAPINFO (video, at least 40 bytes), 2 a WAVEFORMATEX
// (audio, at least 18 bytes), 3 a CZeAviDVInfoEx (interleaved DV), 0 none.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "avi/ze_avi_form_types.h"
#include "platform/win32.h"

// CZeAviDVInfoEx: the DV format information of an interleaved ('iavs') DV stream, a block of
// 32-bit words taken from the stream's 'strf' chunk. The meaning of the individual words belongs to
// the DV code; the first eight are the DVINFO packs (AAuxSrc, AAuxCtl, AAuxSrc1, AAuxCtl1, VAuxSrc,
// VAuxCtl, two reserved words).
//
// The record proper is 18 words, but the format record's copy into it takes 19 words, so the
// storage has room for 19: the 19th word is storage for that copy only.
struct ze_avi_dv_info_ex {
    static constexpr int kWordCount = 18;    // words of the record proper
    static constexpr int kStoredWords = 19;  // words the format record copies in
    uint32_t dwWords[kStoredWords] = {};
};

class CZeAviDVInfoEx : protected ze_avi_dv_info_ex {
public:
    using ze_avi_dv_info_ex::kStoredWords;
    using ze_avi_dv_info_ex::kWordCount;

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

struct ze_avi_streamformat {
    uint32_t dwFormatType = 0;  // kind of the block the record holds
};

class CZeAviStreamFormat : public CZeAviFormTypes, protected ze_avi_streamformat {
public:
    static constexpr uint32_t kNone = 0;
    static constexpr uint32_t kVideo = 1;
    static constexpr uint32_t kAudio = 2;
    static constexpr uint32_t kDVInfo = 3;

    CZeAviStreamFormat() = default;
    // A copy owns a copy of the block held (not of the blocks retained); failing to allocate it
    // is reported as E_OUTOFMEMORY under "CopyFormat" and leaves the copy without a block.
    CZeAviStreamFormat(const CZeAviStreamFormat& other);
    CZeAviStreamFormat& operator=(const CZeAviStreamFormat& other);
    CZeAviStreamFormat(CZeAviStreamFormat&&) = default;
    CZeAviStreamFormat& operator=(CZeAviStreamFormat&&) = default;
    ~CZeAviStreamFormat() override = default;

    // Releases the block; type and size 0.
    HRESULT Reset() override;
    // Both labels "BITMAPINFO" and "WAVEFORMATEX" are always printed; the fields under the one
    // that matches the format type.
    std::string Dump() const override;

    // Stores a copy of `*size` bytes of `data` as a block of kind `*type`:
    // 1: a block of max(40, *size) bytes, zero beyond the copy; dwSize the block's size.
    // 2: the same with 18.
    // 3: a new CZeAviDVInfoEx receiving 19 words of `data`, which must hold that many (76 bytes) whatever
    //    *size says; dwSize = *size. The block held before is not released by this kind of set: it stays
    //    valid until the record is destroyed.
    // other: releases the block; type and size 0.
    // Reports E_POINTER for a null argument and E_OUTOFMEMORY when a block cannot be allocated.
    HRESULT SetFormat(const void* data, const uint32_t* size, const uint32_t* type);

    uint32_t GetFormatType() const { return dwFormatType; }
    // The block, null without one.
    void* GetFormat();
    const void* GetFormat() const;
    // Bytes of the block held (0 without one; 19 words for a DV info block).
    uint32_t GetFormatBytes() const;

    // Typed views of the block, null when the format type differs.
    const BITMAPINFOHEADER* GetBitmapInfoHeader() const;
    const WAVEFORMATEX* GetWaveFormat() const;
    const CZeAviDVInfoEx* GetDVInfo() const;

private:
    // Nothing, the bytes of a bitmap or wave format, or a DV info record (on the heap, so that a
    // retained one keeps its address).
    using Block = std::variant<std::monostate, std::vector<uint8_t>, std::unique_ptr<CZeAviDVInfoEx>>;

    Block m_block;
    // Blocks replaced by a DV info set, kept until destruction (see SetFormat).
    std::vector<Block> m_retained;
};
