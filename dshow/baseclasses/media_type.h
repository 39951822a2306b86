// Media types: CMediaType, an AM_MEDIA_TYPE that owns its format block (task memory, as the COM rules
// for media types handed across interfaces demand) and its pUnk reference; and the free functions that
// create, copy, free and delete plain AM_MEDIA_TYPEs the same way.
#pragma once

#include "platform/win32_dshow.h"

class CMediaType : public AM_MEDIA_TYPE {
public:
    // An empty type: no major type, fixed-size samples of one byte, no format.
    CMediaType();
    explicit CMediaType(const GUID* majorType);
    // Deep copies; a format block that cannot be allocated leaves the copy without one.
    CMediaType(const AM_MEDIA_TYPE& other);
    CMediaType(const CMediaType& other);
    CMediaType& operator=(const AM_MEDIA_TYPE& other);
    CMediaType& operator=(const CMediaType& other);
    ~CMediaType();

    // Equal when the three GUIDs and the format block are equal.
    bool operator==(const CMediaType& other) const;
    bool operator!=(const CMediaType& other) const { return !(*this == other); }

    // Deep copy; E_OUTOFMEMORY when the format block cannot be allocated.
    HRESULT Set(const CMediaType& other);
    HRESULT Set(const AM_MEDIA_TYPE& other);

    // A type is valid once it has a major type.
    BOOL IsValid() const;

    const GUID* Type() const { return &majortype; }
    void SetType(const GUID* type) { majortype = *type; }
    const GUID* Subtype() const { return &subtype; }
    void SetSubtype(const GUID* type) { subtype = *type; }
    const GUID* FormatType() const { return &formattype; }
    void SetFormatType(const GUID* type) { formattype = *type; }

    BOOL IsFixedSize() const { return bFixedSizeSamples; }
    BOOL IsTemporalCompressed() const { return bTemporalCompression; }
    ULONG GetSampleSize() const;
    // A non-zero size makes the samples fixed-size; zero makes them variable.
    void SetSampleSize(ULONG size);
    void SetVariableSize();
    void SetTemporalCompression(BOOL compressed);

    BYTE* Format() const { return pbFormat; }
    ULONG FormatLength() const { return cbFormat; }
    // Replaces the format block with a copy of `format`; FALSE when it cannot be allocated.
    BOOL SetFormat(const BYTE* format, ULONG length);
    // A zero-filled format block of `length` bytes (the old one is freed), or null.
    BYTE* AllocFormatBuffer(ULONG length);
    // A format block of `length` bytes keeping what fits of the old one, or null.
    BYTE* ReallocFormatBuffer(ULONG length);
    void ResetFormatBuffer();
    // Frees what the type owns and makes it empty again.
    void InitMediaType();

    // TRUE when this type is one of the types `partial` describes: every GUID of `partial` other than
    // GUID_NULL is equal to this type's, and when `partial` names a format type, the format blocks are
    // equal too.
    BOOL MatchesPartial(const CMediaType* partial) const;
    // TRUE when the major type or the format type is left open (GUID_NULL).
    BOOL IsPartiallySpecified() const;
};

// Frees what `type` owns (format block, pUnk reference) and leaves it without them.
void WINAPI FreeMediaType(AM_MEDIA_TYPE& type);
// FreeMediaType and then the structure itself, which came from CoTaskMemAlloc. Null is ignored.
void WINAPI DeleteMediaType(AM_MEDIA_TYPE* type);
// A deep copy in task memory (structure and format block), or null.
AM_MEDIA_TYPE* WINAPI CreateMediaType(const AM_MEDIA_TYPE* source);
// Deep copy into `target`, whose own contents are not freed. E_OUTOFMEMORY leaves it without a format.
HRESULT WINAPI CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source);

// Bytes of a picture described by `header`: rows padded to whole DWORDs, times the height.
DWORD GetBitmapSize(const BITMAPINFOHEADER* header);
