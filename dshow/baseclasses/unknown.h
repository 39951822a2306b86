// Object identity and reference counting of the base classes.
//
// CBaseObject counts the live objects of the base classes (filters, pins, allocators, samples,
// enumerators), so that tests and a module's DllCanUnloadNow can see that everything was freed.
// CUnknown implements IUnknown the non-delegating way: its own NonDelegating* methods answer for the
// object, and DECLARE_IUNKNOWN in a class makes the public IUnknown methods forward to the owner,
// which is the aggregating object when there is one and the object itself otherwise.
#pragma once

#include <atomic>

#include "platform/win32_dshow.h"

class CBaseObject {
public:
    explicit CBaseObject(const char* name);
    CBaseObject(const CBaseObject&) = delete;
    CBaseObject& operator=(const CBaseObject&) = delete;
    virtual ~CBaseObject();

    // How many base-class objects exist in the process right now.
    static LONG ObjectsActive();

    const char* ObjectName() const { return m_name; }

private:
    const char* m_name;
    static std::atomic<LONG> s_objects;
};

struct INonDelegatingUnknown {
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};
typedef INonDelegatingUnknown* PNDUNKNOWN;

// Objects start with no reference; whoever creates one takes the first through QueryInterface or AddRef.
// The final NonDelegatingRelease deletes the object.
class CUnknown : public INonDelegatingUnknown, public CBaseObject {
public:
    CUnknown(const char* name, LPUNKNOWN outer, HRESULT* phr = nullptr);

    // The object that answers IUnknown for this one: the aggregating object, or this object's identity.
    LPUNKNOWN GetOwner() const { return m_owner; }
    // This object's identity: an IUnknown whose methods are the non-delegating ones. A class factory
    // hands it to an aggregating object; QueryInterface(IID_IUnknown) answers with it.
    LPUNKNOWN GetInner() { return &m_inner; }

    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;
    ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

protected:
    std::atomic<LONG> m_cRef{0};

private:
    struct Inner final : public IUnknown {
        explicit Inner(CUnknown* self) : self(self) {}
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
        {
            return self->NonDelegatingQueryInterface(iid, object);
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return self->NonDelegatingAddRef(); }
        ULONG STDMETHODCALLTYPE Release() override { return self->NonDelegatingRelease(); }
        CUnknown* const self;
    };

    Inner m_inner;
    LPUNKNOWN const m_owner;
};

// Hands out `unknown` as the answer of a QueryInterface, with a reference for the caller.
HRESULT GetInterface(LPUNKNOWN unknown, void** object);

// The public IUnknown of a class built on CUnknown: every call goes to the owner.
#define DECLARE_IUNKNOWN                                                              \
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override      \
    {                                                                                 \
        return GetOwner()->QueryInterface(iid, object);                               \
    }                                                                                 \
    ULONG STDMETHODCALLTYPE AddRef() override { return GetOwner()->AddRef(); }        \
    ULONG STDMETHODCALLTYPE Release() override { return GetOwner()->Release(); }
