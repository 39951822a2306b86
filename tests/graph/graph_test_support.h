// Shared pieces of the graph filter tests: the report lines a test expects, bitmap headers and
// stream descriptions of chosen sizes, samples from a real allocator, and the filters themselves.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "dshow/baseclasses/allocator.h"
#include "graph/ze_com_ref.h"
#include "graph/ze_graph_create.h"
#include "graph/ze_graph_interfaces.h"
#include "reader/status/ze_error_report.h"

namespace zegraph_test {

// One report line as the reporter writes it with no context set: "[code] message ### Class::Method ### ".
inline std::string Line(const std::string& codeAndMessage, const std::string& where)
{
    return codeAndMessage + " ### " + where + " ### \r\n";
}
inline const std::string kPointer = "[80004003] invalid pointer";
inline const std::string kInvalidArg = "[80070057] one or more arguments are invalid";
inline const std::string kFail = "[80004005] general access denied error";
inline const std::string kOutOfMemory = "[8007000e] out of memory";

// Every test starts with an empty report list and no context, and ends, once it has let go of its
// filters, with as many base-class objects alive as before it began.
class ReportedTest : public ::testing::Test {
protected:
    ReportedTest() : m_objectsBefore(CBaseObject::ObjectsActive()) {}
    void SetUp() override { SetErrorContext(""); }
    void TearDown() override { SetErrorContext(""); }
    // Filters, pins, allocators, samples and enumerators all went with their last reference.
    void ExpectAllObjectsGone() const { EXPECT_EQ(CBaseObject::ObjectsActive(), m_objectsBefore); }
    // The lines reported since the last call, which empties the list.
    static std::vector<std::string> TakeReports()
    {
        std::vector<std::string> lines = GetReportList();
        SetErrorContext("");
        return lines;
    }

    const LONG m_objectsBefore;
};

inline BITMAPINFOHEADER Bitmap(LONG width, LONG height, WORD bitCount, DWORD compression, DWORD sizeImage = 0)
{
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = bitCount;
    header.biCompression = compression;
    header.biSizeImage = sizeImage;
    return header;
}

inline ze_video_stream_desc StreamDesc(uint32_t rate, uint32_t scale)
{
    ze_video_stream_desc desc;
    desc.fccType = ZeFourcc('v', 'i', 'd', 's');
    desc.dwRate = rate;
    desc.dwScale = scale;
    return desc;
}

template <class T>
ZeComRef<T> Create(HRESULT (*create)(IUnknown*, REFIID, void**), REFIID iid)
{
    void* object = nullptr;
    EXPECT_EQ(create(nullptr, iid, &object), S_OK);
    return ZeComRef<T>(static_cast<T*>(object));
}

// Samples of a chosen size from a committed memory allocator.
class SampleMaker {
public:
    explicit SampleMaker(LONG bytes, LONG count = 2)
    {
        EXPECT_EQ(CMemAllocator::CreateInstance(&m_raw), S_OK);
        m_allocator.reset(m_raw);
        ALLOCATOR_PROPERTIES request{count, bytes, 1, 0};
        ALLOCATOR_PROPERTIES actual{};
        EXPECT_EQ(m_allocator->SetProperties(&request, &actual), S_OK);
        EXPECT_EQ(m_allocator->Commit(), S_OK);
    }
    ~SampleMaker() { m_allocator->Decommit(); }

    // A sample whose buffer starts with `bytes` and whose data length is their count.
    ZeComRef<IMediaSample> Make(const std::vector<BYTE>& bytes)
    {
        IMediaSample* sample = nullptr;
        EXPECT_EQ(m_allocator->GetBuffer(&sample, nullptr, nullptr, 0), S_OK);
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        std::memcpy(data, bytes.data(), bytes.size());
        sample->SetActualDataLength(static_cast<LONG>(bytes.size()));
        return ZeComRef<IMediaSample>(sample);
    }

private:
    IMemAllocator* m_raw = nullptr;
    ZeComRef<IMemAllocator> m_allocator;
};

// Bytes 0, 1, 2, ... offset by `seed`, so that two pictures never look alike.
inline std::vector<BYTE> Pattern(size_t count, BYTE seed)
{
    std::vector<BYTE> bytes(count);
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<BYTE>(seed + i);
    return bytes;
}

}  // namespace zegraph_test
