// Media type ownership rules and the partial-match rule used in connection negotiation.
#include "dshow/baseclasses/media_type.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

void ResetToEmpty(AM_MEDIA_TYPE& type)
{
    std::memset(&type, 0, sizeof type);
    type.bFixedSizeSamples = TRUE;
    type.lSampleSize = 1;
}

}  // namespace

void WINAPI FreeMediaType(AM_MEDIA_TYPE& type)
{
    if (type.cbFormat != 0 || type.pbFormat != nullptr)
        CoTaskMemFree(type.pbFormat);
    type.cbFormat = 0;
    type.pbFormat = nullptr;
    if (type.pUnk != nullptr) {
        type.pUnk->Release();
        type.pUnk = nullptr;
    }
}

void WINAPI DeleteMediaType(AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return;
    FreeMediaType(*type);
    CoTaskMemFree(type);
}

HRESULT WINAPI CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source)
{
    *target = *source;
    if (source->cbFormat != 0 && source->pbFormat != nullptr) {
        target->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(source->cbFormat));
        if (target->pbFormat == nullptr) {
            target->cbFormat = 0;
            target->pUnk = nullptr;
            return E_OUTOFMEMORY;
        }
        std::memcpy(target->pbFormat, source->pbFormat, source->cbFormat);
    } else {
        target->pbFormat = nullptr;
        target->cbFormat = 0;
    }
    if (target->pUnk != nullptr)
        target->pUnk->AddRef();
    return S_OK;
}

AM_MEDIA_TYPE* WINAPI CreateMediaType(const AM_MEDIA_TYPE* source)
{
    auto* copy = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (copy == nullptr)
        return nullptr;
    if (FAILED(CopyMediaType(copy, source))) {
        CoTaskMemFree(copy);
        return nullptr;
    }
    return copy;
}

DWORD GetBitmapSize(const BITMAPINFOHEADER* header)
{
    const uint64_t rowBits = static_cast<uint64_t>(static_cast<uint32_t>(header->biWidth)) * header->biBitCount;
    const uint64_t rowBytes = ((rowBits + 31) & ~static_cast<uint64_t>(31)) / 8;
    const uint64_t rows = static_cast<uint64_t>(std::llabs(static_cast<long long>(header->biHeight)));
    return static_cast<DWORD>(rowBytes * rows);
}

CMediaType::CMediaType() : AM_MEDIA_TYPE() { ResetToEmpty(*this); }

CMediaType::CMediaType(const GUID* majorType) : CMediaType() { majortype = *majorType; }

CMediaType::CMediaType(const AM_MEDIA_TYPE& other) : CMediaType() { Set(other); }

CMediaType::CMediaType(const CMediaType& other) : CMediaType() { Set(other); }

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& other)
{
    Set(other);
    return *this;
}

CMediaType& CMediaType::operator=(const CMediaType& other)
{
    Set(other);
    return *this;
}

CMediaType::~CMediaType() { FreeMediaType(*this); }

HRESULT CMediaType::Set(const CMediaType& other) { return Set(static_cast<const AM_MEDIA_TYPE&>(other)); }

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& other)
{
    if (&other == this)
        return S_OK;
    FreeMediaType(*this);
    return CopyMediaType(this, &other);
}

bool CMediaType::operator==(const CMediaType& other) const
{
    return IsEqualGUID(majortype, other.majortype) && IsEqualGUID(subtype, other.subtype) &&
           IsEqualGUID(formattype, other.formattype) && cbFormat == other.cbFormat &&
           (cbFormat == 0 || std::memcmp(pbFormat, other.pbFormat, cbFormat) == 0);
}

BOOL CMediaType::IsValid() const { return !IsEqualGUID(majortype, GUID_NULL); }

ULONG CMediaType::GetSampleSize() const { return IsFixedSize() ? lSampleSize : 0; }

void CMediaType::SetSampleSize(ULONG size)
{
    if (size == 0) {
        SetVariableSize();
    } else {
        bFixedSizeSamples = TRUE;
        lSampleSize = size;
    }
}

void CMediaType::SetVariableSize() { bFixedSizeSamples = FALSE; }

void CMediaType::SetTemporalCompression(BOOL compressed) { bTemporalCompression = compressed; }

BOOL CMediaType::SetFormat(const BYTE* format, ULONG length)
{
    BYTE* block = AllocFormatBuffer(length);
    if (block == nullptr && length != 0)
        return FALSE;
    if (length != 0)
        std::memcpy(block, format, length);
    return TRUE;
}

BYTE* CMediaType::AllocFormatBuffer(ULONG length)
{
    ResetFormatBuffer();
    if (length == 0)
        return nullptr;
    auto* block = static_cast<BYTE*>(CoTaskMemAlloc(length));
    if (block == nullptr)
        return nullptr;
    std::memset(block, 0, length);
    pbFormat = block;
    cbFormat = length;
    return block;
}

BYTE* CMediaType::ReallocFormatBuffer(ULONG length)
{
    if (length == cbFormat)
        return pbFormat;
    auto* block = static_cast<BYTE*>(CoTaskMemAlloc(length));
    if (block == nullptr)
        return nullptr;
    std::memset(block, 0, length);
    if (cbFormat != 0)
        std::memcpy(block, pbFormat, cbFormat < length ? cbFormat : length);
    CoTaskMemFree(pbFormat);
    pbFormat = block;
    cbFormat = length;
    return block;
}

void CMediaType::ResetFormatBuffer()
{
    CoTaskMemFree(pbFormat);
    pbFormat = nullptr;
    cbFormat = 0;
}

void CMediaType::InitMediaType()
{
    FreeMediaType(*this);
    ResetToEmpty(*this);
}

BOOL CMediaType::MatchesPartial(const CMediaType* partial) const
{
    auto open = [](const GUID& g) { return IsEqualGUID(g, GUID_NULL); };
    if (!open(partial->majortype) && !IsEqualGUID(majortype, partial->majortype))
        return FALSE;
    if (!open(partial->subtype) && !IsEqualGUID(subtype, partial->subtype))
        return FALSE;
    if (!open(partial->formattype)) {
        if (!IsEqualGUID(formattype, partial->formattype) || cbFormat != partial->cbFormat)
            return FALSE;
        if (cbFormat != 0 && std::memcmp(pbFormat, partial->pbFormat, cbFormat) != 0)
            return FALSE;
    }
    return TRUE;
}

BOOL CMediaType::IsPartiallySpecified() const
{
    return IsEqualGUID(majortype, GUID_NULL) || IsEqualGUID(formattype, GUID_NULL);
}
