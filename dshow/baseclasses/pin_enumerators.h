// Enumerators over a filter's pins (CEnumPins) and over a pin's preferred media types
// (CEnumMediaTypes). Each holds a reference on what it enumerates and notices, through the pin or type
// version, when that changed under it (VFW_E_ENUM_OUT_OF_SYNC until Reset).
#pragma once

#include "dshow/baseclasses/unknown.h"

class CBaseFilter;
class CBasePin;

class CEnumPins : public CUnknown, public IEnumPins {
public:
    // A fresh enumerator, or a copy of `position`'s position when given.
    CEnumPins(CBaseFilter* filter, const CEnumPins* position);
    ~CEnumPins() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    HRESULT STDMETHODCALLTYPE Next(ULONG count, IPin** pins, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumPins** copy) override;

private:
    bool OutOfSync();

    CBaseFilter* const m_pFilter;
    int m_Position = 0;
    int m_PinCount;
    LONG m_Version;
};

// Stops at the first position for which the pin's GetMediaType answers anything but S_OK.
class CEnumMediaTypes : public CUnknown, public IEnumMediaTypes {
public:
    CEnumMediaTypes(CBasePin* pin, const CEnumMediaTypes* position);
    ~CEnumMediaTypes() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    HRESULT STDMETHODCALLTYPE Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** copy) override;

private:
    bool OutOfSync();

    CBasePin* const m_pPin;
    int m_Position = 0;
    LONG m_Version;
};
