// Automation types and the bind context: BSTR layout, variant ownership, safe arrays, and what a
// bind context holds on to.
#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"

namespace {

std::u16string Wide(const char* ascii) { return std::u16string(ascii, ascii + std::char_traits<char>::length(ascii)); }
const OLECHAR* Ole(const std::u16string& text) { return reinterpret_cast<const OLECHAR*>(text.c_str()); }

// Counts its references, so tests can see who holds it.
class Counted final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!IsEqualIID(iid, IID_IUnknown)) return E_NOINTERFACE;
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++refs); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--refs); }
    int refs = 1;
};

TEST(OleStringTest, LengthPrefixAndInnerZeros) {
    const std::u16string text = Wide("Friendly");
    BSTR name = SysAllocString(Ole(text));
    ASSERT_NE(nullptr, name);
    EXPECT_EQ(8u, SysStringLen(name));
    EXPECT_EQ(16u, SysStringByteLen(name));
    EXPECT_EQ(16u, reinterpret_cast<const uint32_t*>(name)[-1]);  // the byte length in front
    EXPECT_EQ(0, name[8]);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(name)), text);

    const OLECHAR withZero[] = {'a', 0, 'b'};
    BSTR inner = SysAllocStringLen(withZero, 3);
    EXPECT_EQ(3u, SysStringLen(inner));
    EXPECT_EQ('b', inner[2]);
    BSTR blank = SysAllocStringLen(nullptr, 4);
    EXPECT_EQ(4u, SysStringLen(blank));
    EXPECT_EQ(0, blank[0]);

    EXPECT_EQ(nullptr, SysAllocString(nullptr));
    EXPECT_EQ(0u, SysStringLen(nullptr));
    SysFreeString(nullptr);
    SysFreeString(name);
    SysFreeString(inner);
    SysFreeString(blank);
}

TEST(OleVariantTest, ClearAndCopyOwnWhatTheyHold) {
    VARIANT source, copy;
    VariantInit(&source);
    VariantInit(&copy);
    EXPECT_EQ(VT_EMPTY, source.vt);

    source.vt = VT_BSTR;
    source.bstrVal = SysAllocString(Ole(Wide("DV Decoder")));
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));
    EXPECT_EQ(VT_BSTR, copy.vt);
    EXPECT_NE(source.bstrVal, copy.bstrVal);  // a copy of its own
    EXPECT_EQ(10u, SysStringLen(copy.bstrVal));
    EXPECT_EQ(S_OK, VariantClear(&source));
    EXPECT_EQ(VT_EMPTY, source.vt);
    EXPECT_EQ('D', copy.bstrVal[0]);  // still alive after the source is cleared

    Counted object;
    source.vt = VT_UNKNOWN;
    source.punkVal = &object;
    object.AddRef();                               // the variant's reference
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));  // the copied string is freed first
    EXPECT_EQ(3, object.refs);
    EXPECT_EQ(S_OK, VariantClear(&copy));
    EXPECT_EQ(S_OK, VariantClear(&source));
    EXPECT_EQ(1, object.refs);

    // Unknown types are refused and left alone.
    source.vt = 0x0FFE;
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&source));
    EXPECT_EQ(0x0FFE, source.vt);
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(&copy, &source));
    source.vt = VT_VARIANT;  // only meaningful by reference or in an array
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&source));
    EXPECT_EQ(E_INVALIDARG, VariantClear(nullptr));
}

TEST(OleSafeArrayTest, ByteVectorInAVariant) {
    SAFEARRAY* data = SafeArrayCreateVector(VT_UI1, 0, 5);
    ASSERT_NE(nullptr, data);
    EXPECT_EQ(1u, SafeArrayGetDim(data));
    EXPECT_EQ(1u, SafeArrayGetElemsize(data));
    void* bytes = nullptr;
    ASSERT_EQ(S_OK, SafeArrayAccessData(data, &bytes));
    for (int i = 0; i < 5; ++i) static_cast<BYTE*>(bytes)[i] = static_cast<BYTE>(0x10 + i);
    // An array whose data is in use cannot go.
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(data));
    ASSERT_EQ(S_OK, SafeArrayUnaccessData(data));
    EXPECT_EQ(E_UNEXPECTED, SafeArrayUnaccessData(data));

    VARIANT filterData, copy;
    VariantInit(&filterData);
    VariantInit(&copy);
    filterData.vt = VT_ARRAY | VT_UI1;
    filterData.parray = data;
    ASSERT_EQ(S_OK, VariantCopy(&copy, &filterData));
    ASSERT_NE(data, copy.parray);
    LONG lower = -1, upper = -1;
    ASSERT_EQ(S_OK, SafeArrayGetLBound(copy.parray, 1, &lower));
    ASSERT_EQ(S_OK, SafeArrayGetUBound(copy.parray, 1, &upper));
    EXPECT_EQ(0, lower);
    EXPECT_EQ(4, upper);
    ASSERT_EQ(S_OK, SafeArrayAccessData(copy.parray, &bytes));
    EXPECT_EQ(0x14, static_cast<BYTE*>(bytes)[4]);
    SafeArrayUnaccessData(copy.parray);
    VARTYPE vt = 0;
    ASSERT_EQ(S_OK, SafeArrayGetVartype(copy.parray, &vt));
    EXPECT_EQ(VT_UI1, vt);
    EXPECT_EQ(S_OK, VariantClear(&copy));
    EXPECT_EQ(S_OK, VariantClear(&filterData));
}

TEST(OleSafeArrayTest, DimensionsBoundsAndOwnedElements) {
    SAFEARRAYBOUND bounds[2] = {{3, 1}, {4, -2}};  // 3 rows from 1, 4 columns from -2
    SAFEARRAY* grid = SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(nullptr, grid);
    EXPECT_EQ(4u, grid->rgsabound[0].cElements);  // kept last dimension first
    LONG bound = 0;
    SafeArrayGetLBound(grid, 1, &bound);
    EXPECT_EQ(1, bound);
    SafeArrayGetUBound(grid, 1, &bound);
    EXPECT_EQ(3, bound);
    SafeArrayGetLBound(grid, 2, &bound);
    EXPECT_EQ(-2, bound);
    SafeArrayGetUBound(grid, 2, &bound);
    EXPECT_EQ(1, bound);
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetUBound(grid, 3, &bound));
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetUBound(grid, 0, &bound));
    EXPECT_EQ(S_OK, SafeArrayDestroy(grid));

    // Strings and interfaces in an array belong to it: copies duplicate them, destruction frees them.
    SAFEARRAY* names = SafeArrayCreateVector(VT_BSTR, 0, 2);
    BSTR* slots = nullptr;
    ASSERT_EQ(S_OK, SafeArrayAccessData(names, reinterpret_cast<void**>(&slots)));
    slots[0] = SysAllocString(Ole(Wide("one")));
    SafeArrayUnaccessData(names);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(names, &copy));
    BSTR* copied = nullptr;
    SafeArrayAccessData(copy, reinterpret_cast<void**>(&copied));
    EXPECT_NE(slots[0], copied[0]);
    EXPECT_EQ(3u, SysStringLen(copied[0]));
    EXPECT_EQ(nullptr, copied[1]);
    SafeArrayUnaccessData(copy);
    EXPECT_EQ(S_OK, SafeArrayDestroy(names));
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));

    Counted object;
    SAFEARRAY* objects = SafeArrayCreateVector(VT_UNKNOWN, 0, 1);
    IUnknown** held = nullptr;
    SafeArrayAccessData(objects, reinterpret_cast<void**>(&held));
    held[0] = &object;
    object.AddRef();
    SafeArrayUnaccessData(objects);
    ASSERT_EQ(S_OK, SafeArrayCopy(objects, &copy));
    EXPECT_EQ(3, object.refs);
    SafeArrayDestroy(copy);
    SafeArrayDestroy(objects);
    EXPECT_EQ(1, object.refs);

    EXPECT_EQ(nullptr, SafeArrayCreate(VT_EMPTY, 1, bounds));
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_I4, 0, bounds));
    EXPECT_EQ(S_OK, SafeArrayDestroy(nullptr));
}

TEST(BindContextTest, HoldsBoundObjectsParametersAndOptions) {
    IBindCtx* context = nullptr;
    EXPECT_EQ(E_INVALIDARG, CreateBindCtx(1, &context));
    ASSERT_EQ(S_OK, CreateBindCtx(0, &context));
    ASSERT_NE(nullptr, context);

    Counted bound, param;
    ASSERT_EQ(S_OK, context->RegisterObjectBound(&bound));
    EXPECT_EQ(2, bound.refs);
    EXPECT_EQ(S_OK, context->RevokeObjectBound(&bound));
    EXPECT_EQ(MK_E_NOTBOUND, context->RevokeObjectBound(&bound));
    context->RegisterObjectBound(&bound);
    context->RegisterObjectBound(&bound);
    EXPECT_EQ(3, bound.refs);
    EXPECT_EQ(S_OK, context->ReleaseBoundObjects());
    EXPECT_EQ(1, bound.refs);

    std::u16string key = Wide("Device");
    OLECHAR* keyText = reinterpret_cast<OLECHAR*>(&key[0]);
    ASSERT_EQ(S_OK, context->RegisterObjectParam(keyText, &param));
    IUnknown* found = nullptr;
    ASSERT_EQ(S_OK, context->GetObjectParam(keyText, &found));
    EXPECT_EQ(&param, found);
    EXPECT_EQ(3, param.refs);
    found->Release();
    std::u16string other = Wide("Other");
    EXPECT_EQ(E_FAIL, context->GetObjectParam(reinterpret_cast<OLECHAR*>(&other[0]), &found));
    EXPECT_EQ(nullptr, found);

    BIND_OPTS options{};
    options.cbStruct = sizeof options;
    ASSERT_EQ(S_OK, context->GetBindOptions(&options));
    EXPECT_EQ(STGM_READWRITE, options.grfMode);
    options.grfMode = STGM_READ;
    options.dwTickCountDeadline = 500;
    ASSERT_EQ(S_OK, context->SetBindOptions(&options));
    BIND_OPTS read{};
    read.cbStruct = sizeof read;
    context->GetBindOptions(&read);
    EXPECT_EQ(STGM_READ, read.grfMode);
    EXPECT_EQ(500u, read.dwTickCountDeadline);
    read.cbStruct = 4;
    EXPECT_EQ(E_INVALIDARG, context->GetBindOptions(&read));

    IRunningObjectTable* table = reinterpret_cast<IRunningObjectTable*>(1);
    EXPECT_EQ(E_NOTIMPL, context->GetRunningObjectTable(&table));
    EXPECT_EQ(nullptr, table);

    // The last release lets go of what the context still holds.
    context->RegisterObjectBound(&bound);
    EXPECT_EQ(0u, context->Release());
    EXPECT_EQ(1, bound.refs);
    EXPECT_EQ(1, param.refs);
}

}  // namespace
