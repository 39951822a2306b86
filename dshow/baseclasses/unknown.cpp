// Live-object counting and the non-delegating IUnknown.
#include "dshow/baseclasses/unknown.h"

std::atomic<LONG> CBaseObject::s_objects{0};

CBaseObject::CBaseObject(const char* name) : m_name(name) { ++s_objects; }
CBaseObject::~CBaseObject() { --s_objects; }
LONG CBaseObject::ObjectsActive() { return s_objects.load(); }

CUnknown::CUnknown(const char* name, LPUNKNOWN outer, HRESULT* /*phr*/)
    : CBaseObject(name), m_inner(this), m_owner(outer ? outer : &m_inner)
{
}

HRESULT STDMETHODCALLTYPE CUnknown::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown))
        return GetInterface(GetInner(), object);
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CUnknown::NonDelegatingAddRef() { return static_cast<ULONG>(++m_cRef); }

ULONG STDMETHODCALLTYPE CUnknown::NonDelegatingRelease()
{
    const LONG left = --m_cRef;
    if (left == 0) {
        // A destructor that AddRefs and Releases this object again must not delete it twice.
        m_cRef = 1;
        delete this;
        return 0;
    }
    return static_cast<ULONG>(left);
}

HRESULT GetInterface(LPUNKNOWN unknown, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = unknown;
    unknown->AddRef();
    return S_OK;
}
