// COM runtime basics: apartment counting per thread, task memory, GUID text, UTF-16 conversion, and the
// automation types: BSTR layout, variant ownership, safe arrays, and what a bind context holds on to.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/win32.h"

namespace {

std::u16string Wide(const char* ascii) { return std::u16string(ascii, ascii + std::char_traits<char>::length(ascii)); }
const OLECHAR* Ole(const std::u16string& text) { return reinterpret_cast<const OLECHAR*>(text.c_str()); }
std::string Narrow(const OLECHAR* text) {
    std::string out;
    for (; *text; ++text) out.push_back(static_cast<char>(*text));
    return out;
}

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

// A GUID whose every field has distinct bytes, so field order and byte order both show in its text.
constexpr GUID kSample = {0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};

TEST(ComApartmentTest, InitialisationCountsPerThread) {
    EXPECT_EQ(S_OK, CoInitialize(nullptr));
    EXPECT_EQ(S_FALSE, CoInitialize(nullptr));
    EXPECT_EQ(S_FALSE, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    EXPECT_EQ(RPC_E_CHANGED_MODE, CoInitializeEx(nullptr, COINIT_MULTITHREADED));  // not counted
    EXPECT_EQ(E_INVALIDARG, CoInitialize(reinterpret_cast<void*>(1)));

    // Another thread has its own count and may choose the other model.
    HRESULT other[3] = {};
    std::thread([&] {
        other[0] = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        other[1] = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        CoUninitialize();
        CoUninitialize();
        other[2] = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);  // fresh again after the last uninit
        CoUninitialize();
    }).join();
    EXPECT_EQ(S_OK, other[0]);
    EXPECT_EQ(S_FALSE, other[1]);
    EXPECT_EQ(S_OK, other[2]);

    // Three successful calls need three CoUninitialize; then the thread starts over.
    CoUninitialize();
    CoUninitialize();
    EXPECT_EQ(S_FALSE, CoInitialize(nullptr));
    CoUninitialize();
    CoUninitialize();
    CoUninitialize();  // one too many is ignored
    EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    CoUninitialize();
}

TEST(ComTaskMemoryTest, AllocReallocFree) {
    char* block = static_cast<char*>(CoTaskMemAlloc(8));
    ASSERT_NE(nullptr, block);
    std::memcpy(block, "1234567", 8);
    block = static_cast<char*>(CoTaskMemRealloc(block, 4096));
    ASSERT_NE(nullptr, block);
    EXPECT_STREQ("1234567", block);
    EXPECT_EQ(nullptr, CoTaskMemRealloc(block, 0));  // frees
    void* empty = CoTaskMemAlloc(0);
    EXPECT_NE(nullptr, empty);
    CoTaskMemFree(empty);
    void* fresh = CoTaskMemRealloc(nullptr, 16);
    EXPECT_NE(nullptr, fresh);
    CoTaskMemFree(fresh);
    CoTaskMemFree(nullptr);
}

TEST(ComGuidTextTest, ClsidTextRoundTrip) {
    LPOLESTR text = nullptr;
    ASSERT_EQ(S_OK, StringFromCLSID(kSample, &text));
    ASSERT_NE(nullptr, text);
    EXPECT_EQ("{01234567-89AB-CDEF-FEDC-BA9876543210}", Narrow(text));
    CLSID back{};
    EXPECT_EQ(S_OK, CLSIDFromString(text, &back));
    EXPECT_TRUE(IsEqualCLSID(kSample, back));
    CoTaskMemFree(text);

    // Lower-case digits are read as well; the text that comes out is always upper-case.
    const std::u16string lower = Wide("{c3a8e5d1-6f2b-4a97-b0e4-19d7c5a3f260}");
    ASSERT_EQ(S_OK, CLSIDFromString(Ole(lower), &back));
    EXPECT_TRUE(IsEqualCLSID(back, {0xC3A8E5D1, 0x6F2B, 0x4A97, {0xB0, 0xE4, 0x19, 0xD7, 0xC5, 0xA3, 0xF2, 0x60}}));
    OLECHAR buffer[39];
    EXPECT_EQ(39, StringFromGUID2(back, buffer, 39));
    EXPECT_EQ("{C3A8E5D1-6F2B-4A97-B0E4-19D7C5A3F260}", Narrow(buffer));
    EXPECT_EQ(0, StringFromGUID2(back, buffer, 38));

    IID iid{};
    EXPECT_EQ(S_OK, IIDFromString(Ole(lower), &iid));
    EXPECT_TRUE(IsEqualIID(back, iid));
}

TEST(ComGuidTextTest, BadTextIsAClassStringError) {
    CLSID clsid = kSample;
    for (const char* bad : {"", "{}", "01234567-89AB-CDEF-FEDC-BA9876543210",
                            "{01234567-89AB-CDEF-FEDC-BA9876543210",      // no closing brace
                            "{01234567-89AB-CDEF-FEDC-BA9876543210}x",    // trailing text
                            "{0123456G-89AB-CDEF-FEDC-BA9876543210}",     // not hex
                            "{01234567_89AB-CDEF-FEDC-BA9876543210}",     // wrong separator
                            "{01234567-89AB-CDEF-FEDCBA-9876543210}"}) {  // separator misplaced
        const std::u16string text = Wide(bad);
        EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromString(Ole(text), &clsid)) << bad;
        EXPECT_EQ(CO_E_IIDSTRING, IIDFromString(Ole(text), &clsid)) << bad;
    }
    EXPECT_TRUE(IsEqualCLSID(kSample, clsid));  // untouched by failures
    EXPECT_EQ(E_INVALIDARG, CLSIDFromString(Ole(Wide("{01234567-89AB-CDEF-FEDC-BA9876543210}")), nullptr));
    EXPECT_EQ(S_OK, CLSIDFromString(nullptr, &clsid));
    EXPECT_TRUE(IsEqualCLSID(GUID_NULL, clsid));
    EXPECT_EQ(E_INVALIDARG, StringFromCLSID(kSample, nullptr));
}

TEST(WideTextTest, Utf8AndUtf16RoundTrip) {
    const char* text = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA5";  // A, e acute, euro sign, a camera (two units)
    const int needed = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    EXPECT_EQ(6, needed);  // four characters, one of them a surrogate pair, and the zero
    WCHAR wide[8] = {};
    ASSERT_EQ(6, MultiByteToWideChar(CP_UTF8, 0, text, -1, wide, 8));
    EXPECT_EQ((std::vector<WCHAR>{0x41, 0xE9, 0x20AC, 0xD83C, 0xDFA5, 0}), std::vector<WCHAR>(wide, wide + 6));
    char back[16] = {};
    ASSERT_EQ(11, WideCharToMultiByte(CP_ACP, 0, wide, -1, back, sizeof back, nullptr, nullptr));
    EXPECT_STREQ(text, back);

    // Explicit lengths convert no zero; too small a buffer fails with the Windows error number.
    EXPECT_EQ(1, MultiByteToWideChar(CP_UTF8, 0, text, 1, wide, 8));
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, text, -1, wide, 3));
    EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
    EXPECT_EQ(0, MultiByteToWideChar(1252, 0, text, -1, wide, 8));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());

    // Ill-formed input becomes the replacement character instead of being dropped.
    const char broken[] = {'a', static_cast<char>(0xC3), 'b', 0};
    ASSERT_EQ(4, MultiByteToWideChar(CP_UTF8, 0, broken, -1, wide, 8));
    EXPECT_EQ(0xFFFD, wide[1]);
    const WCHAR lone[] = {0xD800, 'x', 0};
    EXPECT_EQ(5, WideCharToMultiByte(CP_UTF8, 0, lone, -1, back, sizeof back, nullptr, nullptr));
    EXPECT_STREQ("\xEF\xBF\xBDx", back);
}

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
    EXPECT_EQ(std::make_pair(0, 4), std::make_pair(static_cast<int>(lower), static_cast<int>(upper)));
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
    LONG lower1 = 0, upper1 = 0, lower2 = 0, upper2 = 0, bound = 0;
    SafeArrayGetLBound(grid, 1, &lower1);
    SafeArrayGetUBound(grid, 1, &upper1);
    SafeArrayGetLBound(grid, 2, &lower2);
    SafeArrayGetUBound(grid, 2, &upper2);
    EXPECT_EQ((std::vector<LONG>{1, 3, -2, 1}), (std::vector<LONG>{lower1, upper1, lower2, upper2}));
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
