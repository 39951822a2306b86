#include "avi/ze_avi_stream_format.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "avi/ze_avi_fourcc.h"
#include "reader/status/ze_error_report.h"

namespace {
const char kClass[] = "CZeAviStreamFormat";
}

CZeAviStreamFormat::CZeAviStreamFormat(const CZeAviStreamFormat& other)
    : CZeAviFormTypes(other), ze_avi_streamformat(other) {
    try {
        if (const auto* bytes = std::get_if<std::vector<uint8_t>>(&other.m_block)) {
            m_block = *bytes;
        } else if (const auto* info = std::get_if<std::unique_ptr<CZeAviDVInfoEx>>(&other.m_block)) {
            m_block = std::make_unique<CZeAviDVInfoEx>(**info);
        }
    } catch (const std::bad_alloc&) {
        m_block = std::monostate();
        dwFormatType = kNone;
        ReportError(kClass, "CopyFormat", E_OUTOFMEMORY);
    }
}

CZeAviStreamFormat& CZeAviStreamFormat::operator=(const CZeAviStreamFormat& other) {
    if (this != &other) {
        CZeAviStreamFormat copy(other);
        // The retained blocks stay with this record until it goes.
        copy.m_retained = std::move(m_retained);
        *this = std::move(copy);
    }
    return *this;
}

HRESULT CZeAviStreamFormat::Reset() {
    m_block = std::monostate();
    dwFormatType = kNone;
    return CZeAviFormTypes::Reset();
}

HRESULT CZeAviStreamFormat::SetFormat(const void* data, const uint32_t* size, const uint32_t* type) {
    if (data == nullptr || size == nullptr || type == nullptr) return ReportError(kClass, "SetFormat", E_POINTER);
    if (*type == kVideo || *type == kAudio) {
        const uint32_t minimum = (*type == kVideo) ? 40u : 18u;
        m_block = std::monostate();
        const uint32_t bytes = (*size <= minimum) ? minimum : *size;
        std::vector<uint8_t> block;
        try {
            block.assign(bytes, 0);
        } catch (const std::bad_alloc&) {
            return ReportError(kClass, "SetFormat", E_OUTOFMEMORY);
        }
        std::memcpy(block.data(), data, *size);
        m_block = std::move(block);
        SetSize(bytes);
        dwFormatType = *type;
        return S_OK;
    }
    if (*type == kDVInfo) {
        // The block held so far is kept alive, not released, until the record goes.
        if (!std::holds_alternative<std::monostate>(m_block)) m_retained.push_back(std::move(m_block));
        auto info = std::make_unique<CZeAviDVInfoEx>();
        // Always 19 words, whatever `*size` says: the size is only recorded.
        std::memcpy(info->Words(), data, sizeof(uint32_t) * CZeAviDVInfoEx::kStoredWords);
        m_block = std::move(info);
        dwFormatType = kDVInfo;
        SetSize(*size);
        return S_OK;
    }
    m_block = std::monostate();
    dwFormatType = kNone;
    SetSize(0);
    return S_OK;
}

void* CZeAviStreamFormat::GetFormat() {
    return const_cast<void*>(static_cast<const CZeAviStreamFormat&>(*this).GetFormat());
}

const void* CZeAviStreamFormat::GetFormat() const {
    if (const auto* bytes = std::get_if<std::vector<uint8_t>>(&m_block)) return bytes->data();
    if (const auto* info = std::get_if<std::unique_ptr<CZeAviDVInfoEx>>(&m_block)) return info->get();
    return nullptr;
}

uint32_t CZeAviStreamFormat::GetFormatBytes() const {
    if (const auto* bytes = std::get_if<std::vector<uint8_t>>(&m_block)) return static_cast<uint32_t>(bytes->size());
    if (std::holds_alternative<std::unique_ptr<CZeAviDVInfoEx>>(m_block)) {
        return sizeof(uint32_t) * CZeAviDVInfoEx::kStoredWords;
    }
    return 0;
}

const BITMAPINFOHEADER* CZeAviStreamFormat::GetBitmapInfoHeader() const {
    return dwFormatType == kVideo ? static_cast<const BITMAPINFOHEADER*>(GetFormat()) : nullptr;
}

const WAVEFORMATEX* CZeAviStreamFormat::GetWaveFormat() const {
    return dwFormatType == kAudio ? static_cast<const WAVEFORMATEX*>(GetFormat()) : nullptr;
}

const CZeAviDVInfoEx* CZeAviStreamFormat::GetDVInfo() const {
    return dwFormatType == kDVInfo ? static_cast<const CZeAviDVInfoEx*>(GetFormat()) : nullptr;
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

HRESULT CZeAviDVInfoEx::Reset() {
    for (uint32_t& word : dwWords) word = 0;
    return S_OK;
}

uint32_t CZeAviDVInfoEx::GetWord(int32_t index) const {
    return (index >= 0 && index < kStoredWords) ? dwWords[index] : 0;
}

void CZeAviDVInfoEx::SetWord(int32_t index, uint32_t value) {
    if (index >= 0 && index < kStoredWords) dwWords[index] = value;
}
