#include "avi/ze_avi_stream_format.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "avi/ze_avi_fourcc.h"
#include "reader/status/ze_error_report.h"

namespace {
const char kClass[] = "CZeAviStreamFormat";
}

CZeAviStreamFormat::CZeAviStreamFormat(const CZeAviStreamFormat& other)
    : CZeAviFormTypes(other), ze_avi_streamformat() {
    CopyBlockFrom(other);
}

CZeAviStreamFormat& CZeAviStreamFormat::operator=(const CZeAviStreamFormat& other) {
    if (this != &other) {
        CZeAviFormTypes::operator=(other);
        ReleaseBlock();
        CopyBlockFrom(other);
    }
    return *this;
}

CZeAviStreamFormat::~CZeAviStreamFormat() {
    ReleaseBlock();
    for (const Block& block : m_retained) Free(block);
}

void CZeAviStreamFormat::Free(Block block) {
    if (block.data == nullptr) return;
    if (block.type == kDVInfo) {
        delete static_cast<CZeAviDVInfoEx*>(block.data);
    } else {
        delete[] static_cast<uint8_t*>(block.data);
    }
}

void CZeAviStreamFormat::ReleaseBlock() {
    Free({lpFormat, dwFormatType});
    lpFormat = nullptr;
    m_blockBytes = 0;
}

HRESULT CZeAviStreamFormat::CopyBlockFrom(const CZeAviStreamFormat& other) {
    dwFormatType = other.dwFormatType;
    if (other.lpFormat == nullptr) return S_OK;
    if (other.dwFormatType == kDVInfo) {
        lpFormat = new (std::nothrow) CZeAviDVInfoEx(*static_cast<const CZeAviDVInfoEx*>(other.lpFormat));
    } else {
        uint8_t* bytes = new (std::nothrow) uint8_t[other.m_blockBytes];
        if (bytes != nullptr) std::memcpy(bytes, other.lpFormat, other.m_blockBytes);
        lpFormat = bytes;
    }
    if (lpFormat == nullptr) {
        dwFormatType = kNone;
        return ReportError(kClass, "CopyFormat", E_OUTOFMEMORY);
    }
    m_blockBytes = other.m_blockBytes;
    return S_OK;
}

HRESULT CZeAviStreamFormat::Reset() {
    ReleaseBlock();
    dwFormatType = kNone;
    return CZeAviFormTypes::Reset();
}

HRESULT CZeAviStreamFormat::SetFormat(const void* data, const uint32_t* size, const uint32_t* type) {
    if (data == nullptr || size == nullptr || type == nullptr) return ReportError(kClass, "SetFormat", E_POINTER);
    if (*type == kVideo || *type == kAudio) {
        const uint32_t minimum = (*type == kVideo) ? 40u : 18u;
        ReleaseBlock();
        const uint32_t bytes = (*size <= minimum) ? minimum : *size;
        uint8_t* block = new (std::nothrow) uint8_t[bytes]();
        if (block == nullptr) return ReportError(kClass, "SetFormat", E_OUTOFMEMORY);
        std::memcpy(block, data, *size);
        lpFormat = block;
        m_blockBytes = bytes;
        dwSize = bytes;
        dwFormatType = *type;
        return S_OK;
    }
    if (*type == kDVInfo) {
        // The block held so far is kept alive, not released, until the record goes.
        if (lpFormat != nullptr) m_retained.push_back({lpFormat, dwFormatType});
        CZeAviDVInfoEx* info = new CZeAviDVInfoEx();
        // Always 19 words, whatever `*size` says: the size is only recorded.
        std::memcpy(info->Words(), data, sizeof(uint32_t) * CZeAviDVInfoEx::kStoredWords);
        lpFormat = info;
        m_blockBytes = sizeof(uint32_t) * CZeAviDVInfoEx::kStoredWords;
        dwFormatType = kDVInfo;
        dwSize = *size;
        return S_OK;
    }
    ReleaseBlock();
    dwFormatType = kNone;
    dwSize = 0;
    return S_OK;
}

const BITMAPINFOHEADER* CZeAviStreamFormat::GetBitmapInfoHeader() const {
    return dwFormatType == kVideo ? static_cast<const BITMAPINFOHEADER*>(lpFormat) : nullptr;
}

const WAVEFORMATEX* CZeAviStreamFormat::GetWaveFormat() const {
    return dwFormatType == kAudio ? static_cast<const WAVEFORMATEX*>(lpFormat) : nullptr;
}

const CZeAviDVInfoEx* CZeAviStreamFormat::GetDVInfo() const {
    return dwFormatType == kDVInfo ? static_cast<const CZeAviDVInfoEx*>(lpFormat) : nullptr;
}

std::string CZeAviStreamFormat::Dump() const {
    using ZeAvi::DumpLine;
    std::string text = "### CZeAviStreamFormat ###\n" + DumpBase();
    text += DumpLine("dwFormatType : %ld", dwFormatType);
    text += "BITMAPINFO\n";
    if (const BITMAPINFOHEADER* bih = GetBitmapInfoHeader()) {
        text += DumpLine("biSize: %ld", bih->biSize);
        text += DumpLine("biWidth: %ld", static_cast<uint32_t>(bih->biWidth));
        text += DumpLine("biHeight: %ld", static_cast<uint32_t>(bih->biHeight));
        text += DumpLine("biPlanes: %ld", bih->biPlanes);
        text += DumpLine("biBitCount: %ld", bih->biBitCount);
        char compression[5] = {};
        std::memcpy(compression, &bih->biCompression, 4);
        char line[64];
        std::snprintf(line, sizeof(line), "biCompression: %s\n", compression);
        text += line;
        text += DumpLine("biSizeImage: %ld", bih->biSizeImage);
        text += DumpLine("biXPelsPerMeter: %ld", static_cast<uint32_t>(bih->biXPelsPerMeter));
        text += DumpLine("biYPelsPerMeter: %ld", static_cast<uint32_t>(bih->biYPelsPerMeter));
        text += DumpLine("biClrUsed: %ld", bih->biClrUsed);
        text += DumpLine("biClrImportant: %ld", bih->biClrImportant);
    }
    text += "WAVEFORMATEX\n";
    if (const WAVEFORMATEX* wfx = GetWaveFormat()) {
        text += DumpLine("wFormatTag: %ld", wfx->wFormatTag);
        text += DumpLine("nChannels: %ld", wfx->nChannels);
        text += DumpLine("nSamplesPerSec: %ld", wfx->nSamplesPerSec);
        text += DumpLine("nAvgBytesPerSec: %ld", wfx->nAvgBytesPerSec);
        text += DumpLine("nBlockAlign: %ld", wfx->nBlockAlign);
        text += DumpLine("wBitsPerSample: %ld", wfx->wBitsPerSample);
        text += DumpLine("cbSize: %ld", wfx->cbSize);
    }
    return text;
}
