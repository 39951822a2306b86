// CZeAviStreamFormat: one stream's format, the body of a 'strf' chunk. It owns a format block whose
// kind follows the format type: 1 a BITMAPINFO (video, at least 40 bytes), 2 a WAVEFORMATEX
// (audio, at least 18 bytes), 3 a CZeAviDVInfoEx (interleaved DV), 0 none.
#pragma once

#include <cstdint>
#include <vector>

#include "avi/ze_avi_dv_info_ex.h"
#include "avi/ze_avi_form_types.h"

struct ze_avi_streamformat {
    uint32_t dwFormatType = 0;
    void* lpFormat = nullptr;  // owned; its kind follows dwFormatType
};

class CZeAviStreamFormat : public CZeAviFormTypes, public ze_avi_streamformat {
public:
    static constexpr uint32_t kNone = 0;
    static constexpr uint32_t kVideo = 1;
    static constexpr uint32_t kAudio = 2;
    static constexpr uint32_t kDVInfo = 3;

    CZeAviStreamFormat() = default;
    CZeAviStreamFormat(const CZeAviStreamFormat& other);
    CZeAviStreamFormat& operator=(const CZeAviStreamFormat& other);
    ~CZeAviStreamFormat() override;

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
    void* GetFormat() { return lpFormat; }
    const void* GetFormat() const { return lpFormat; }
    // Bytes of the block held (0 without one; the object's size for a DV info block).
    uint32_t GetFormatBytes() const { return m_blockBytes; }

    // Typed views of the block, null when the format type differs.
    const BITMAPINFOHEADER* GetBitmapInfoHeader() const;
    const WAVEFORMATEX* GetWaveFormat() const;
    const CZeAviDVInfoEx* GetDVInfo() const;

private:
    struct Block {
        void* data;
        uint32_t type;
    };
    static void Free(Block block);
    void ReleaseBlock();
    HRESULT CopyBlockFrom(const CZeAviStreamFormat& other);

    uint32_t m_blockBytes = 0;
    // Blocks replaced by a DV info set, kept until destruction (see SetFormat).
    std::vector<Block> m_retained;
};
