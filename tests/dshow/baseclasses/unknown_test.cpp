// The non-delegating IUnknown: identity, delegation to an aggregating object, and deletion on the
// final release.
#include "dshow/baseclasses/streams.h"
#include "tests/dshow/baseclasses/live_objects.h"

namespace {

const CLSID kPersistClass = {0x12345678, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};

class Persisted : public CUnknown, public IPersist {
public:
    explicit Persisted(LPUNKNOWN outer) : CUnknown("Persisted", outer) {}
    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override
    {
        if (IsEqualIID(iid, IID_IPersist))
            return GetInterface(static_cast<IPersist*>(this), object);
        return CUnknown::NonDelegatingQueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override
    {
        *clsid = kPersistClass;
        return S_OK;
    }
};

// An aggregating object reduced to its reference count; it answers IUnknown only.
class Outer : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (!IsEqualIID(iid, IID_IUnknown)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }
    ULONG refs = 1;
};

using UnknownTest = LiveObjectTest;

TEST_F(UnknownTest, AnObjectOnItsOwnHasOneIdentityAndGoesWithItsLastReference)
{
    const LONG before = CBaseObject::ObjectsActive();
    auto* object = new Persisted(nullptr);
    IPersist* persist = nullptr;
    ASSERT_EQ(object->NonDelegatingQueryInterface(IID_IPersist, reinterpret_cast<void**>(&persist)), S_OK);
    IUnknown* first = nullptr;
    IUnknown* second = nullptr;
    ASSERT_EQ(persist->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&first)), S_OK);
    ASSERT_EQ(object->GetInner()->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&second)), S_OK);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, object->GetInner());
    void* none = reinterpret_cast<void*>(1);
    EXPECT_EQ(persist->QueryInterface(IID_IMemAllocator, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(first->Release(), 2u);
    EXPECT_EQ(second->Release(), 1u);
    EXPECT_EQ(CBaseObject::ObjectsActive(), before + 1);
    EXPECT_EQ(persist->Release(), 0u);
    EXPECT_EQ(CBaseObject::ObjectsActive(), before);
}

TEST_F(UnknownTest, AnAggregatedObjectLeavesItsPublicIUnknownToTheOuterObject)
{
    Outer outer;
    auto* inner = new Persisted(&outer);
    IUnknown* nonDelegating = inner->GetInner();
    nonDelegating->AddRef();  // what the outer object keeps

    IPersist* persist = nullptr;
    ASSERT_EQ(nonDelegating->QueryInterface(IID_IPersist, reinterpret_cast<void**>(&persist)), S_OK);
    EXPECT_EQ(outer.refs, 2u) << "the reference handed out is the outer object's";
    IUnknown* identity = nullptr;
    ASSERT_EQ(persist->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    EXPECT_EQ(identity, static_cast<IUnknown*>(&outer));
    identity->Release();
    CLSID clsid{};
    ASSERT_EQ(persist->GetClassID(&clsid), S_OK);
    EXPECT_TRUE(IsEqualGUID(clsid, kPersistClass));
    persist->Release();
    EXPECT_EQ(outer.refs, 1u);
    EXPECT_EQ(nonDelegating->Release(), 0u);
}

}  // namespace
