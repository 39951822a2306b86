// COM runtime basics: apartment counting per thread, task memory, GUID text and UTF-16 conversion.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "platform/win32.h"

namespace {

std::u16string Wide(const char* ascii) { return std::u16string(ascii, ascii + std::char_traits<char>::length(ascii)); }
const OLECHAR* Ole(const std::u16string& text) { return reinterpret_cast<const OLECHAR*>(text.c_str()); }
std::string Narrow(const OLECHAR* text) {
    std::string out;
    for (; *text; ++text) out.push_back(static_cast<char>(*text));
    return out;
}

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
    EXPECT_EQ(0xC3A8E5D1u, back.Data1);
    EXPECT_EQ(0x6F2B, back.Data2);
    EXPECT_EQ(0x4A97, back.Data3);
    EXPECT_EQ(0xB0, back.Data4[0]);
    EXPECT_EQ(0x60, back.Data4[7]);
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
    EXPECT_EQ(0x41, wide[0]);
    EXPECT_EQ(0xE9, wide[1]);
    EXPECT_EQ(0x20AC, wide[2]);
    EXPECT_EQ(0xD83C, wide[3]);
    EXPECT_EQ(0xDFA5, wide[4]);
    EXPECT_EQ(0, wide[5]);
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

}  // namespace
