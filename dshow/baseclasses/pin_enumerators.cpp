// Pin and media type enumeration.
#include "dshow/baseclasses/pin_enumerators.h"

#include <new>

#include "dshow/baseclasses/base_pin.h"

namespace {

// The start of Next, shared by both enumerators: the count and fetched-pointer rule, nothing fetched
// yet, and no items from an enumerator whose source changed under it.
HRESULT BeginNext(ULONG count, const void* items, ULONG* fetched, bool outOfSync)
{
    if (items == nullptr)
        return E_POINTER;
    if (fetched == nullptr && count > 1)
        return E_INVALIDARG;
    if (fetched != nullptr)
        *fetched = 0;
    return outOfSync ? VFW_E_ENUM_OUT_OF_SYNC : S_OK;
}

// Clone, shared by both enumerators: a new enumerator over the same source at the same position.
template <typename Enumerator, typename Source, typename Interface>
HRESULT CloneAt(Source* source, const Enumerator* position, bool outOfSync, REFIID iid, Interface** copy)
{
    if (copy == nullptr)
        return E_POINTER;
    *copy = nullptr;
    if (outOfSync)
        return VFW_E_ENUM_OUT_OF_SYNC;
    try {
        auto* created = new Enumerator(source, position);
        return created->NonDelegatingQueryInterface(iid, reinterpret_cast<void**>(copy));
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

CEnumPins::CEnumPins(CBaseFilter* filter, const CEnumPins* position)
    : CUnknown("CEnumPins", nullptr), m_pFilter(filter), m_PinCount(filter->GetPinCount()),
      m_Version(filter->GetPinVersion())
{
    m_pFilter->AddRef();
    if (position != nullptr) {
        m_Position = position->m_Position;
        m_PinCount = position->m_PinCount;
        m_Version = position->m_Version;
    }
}

CEnumPins::~CEnumPins() { m_pFilter->Release(); }

HRESULT STDMETHODCALLTYPE CEnumPins::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IEnumPins))
        return GetInterface(static_cast<IEnumPins*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

bool CEnumPins::OutOfSync() { return m_Version != m_pFilter->GetPinVersion(); }

HRESULT STDMETHODCALLTYPE CEnumPins::Next(ULONG count, IPin** pins, ULONG* fetched)
{
    const HRESULT start = BeginNext(count, pins, fetched, OutOfSync());
    if (start != S_OK)
        return start;
    ULONG given = 0;
    while (given < count && m_Position < m_PinCount) {
        CBasePin* pin = m_pFilter->GetPin(m_Position++);
        if (pin == nullptr)
            break;
        pin->AddRef();
        pins[given++] = pin;
    }
    if (fetched != nullptr)
        *fetched = given;
    return given == count ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CEnumPins::Skip(ULONG count)
{
    if (OutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;
    const ULONG left = static_cast<ULONG>(m_PinCount - m_Position);
    if (count > left)
        return S_FALSE;
    m_Position += static_cast<int>(count);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CEnumPins::Reset()
{
    m_Version = m_pFilter->GetPinVersion();
    m_PinCount = m_pFilter->GetPinCount();
    m_Position = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CEnumPins::Clone(IEnumPins** copy)
{
    return CloneAt(m_pFilter, this, OutOfSync(), IID_IEnumPins, copy);
}

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pin, const CEnumMediaTypes* position)
    : CUnknown("CEnumMediaTypes", nullptr), m_pPin(pin), m_Version(pin->GetMediaTypeVersion())
{
    m_pPin->AddRef();
    if (position != nullptr) {
        m_Position = position->m_Position;
        m_Version = position->m_Version;
    }
}

CEnumMediaTypes::~CEnumMediaTypes() { m_pPin->Release(); }

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IEnumMediaTypes))
        return GetInterface(static_cast<IEnumMediaTypes*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

bool CEnumMediaTypes::OutOfSync() { return m_Version != m_pPin->GetMediaTypeVersion(); }

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched)
{
    const HRESULT start = BeginNext(count, types, fetched, OutOfSync());
    if (start != S_OK)
        return start;
    ULONG given = 0;
    try {
        while (given < count) {
            CMediaType type;
            if (m_pPin->GetMediaType(m_Position, &type) != S_OK)
                break;
            AM_MEDIA_TYPE* copy = CreateMediaType(&type);
            if (copy == nullptr)
                break;
            types[given++] = copy;
            ++m_Position;
        }
    } catch (const std::bad_alloc&) {
    }
    if (fetched != nullptr)
        *fetched = given;
    return given == count ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Skip(ULONG count)
{
    if (OutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;
    while (count > 0) {
        CMediaType type;
        if (m_pPin->GetMediaType(m_Position, &type) != S_OK)
            return S_FALSE;
        ++m_Position;
        --count;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Reset()
{
    m_Position = 0;
    m_Version = m_pPin->GetMediaTypeVersion();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CEnumMediaTypes::Clone(IEnumMediaTypes** copy)
{
    return CloneAt(m_pPin, this, OutOfSync(), IID_IEnumMediaTypes, copy);
}
