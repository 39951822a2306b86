// Index records and the record tree: zeroed construction and reset, copies, and how AddStream
// files streams by their format type.
#include <gtest/gtest.h>

#include "avi/ze_avi_file.h"
#include "avi/ze_avi_index_records.h"

namespace {

CZeAviIndexChunk Entry(uint32_t n) {
    CZeAviIndexChunk e;
    e.SetChunkId(0x63643030);
    e.SetFlags(n & 1 ? 0x10 : 0);
    e.SetOffset(n * 10);
    e.SetSize(n + 1);
    e.SetPosition(0x100000000ull + n);
    return e;
}

void ExpectZero(const CZeAviIndexChunk& e) {
    EXPECT_EQ(e.GetChunkId(), 0u);
    EXPECT_EQ(e.GetFlags(), 0u);
    EXPECT_EQ(e.GetOffset(), 0u);
    EXPECT_EQ(e.GetSize(), 0u);
    EXPECT_EQ(e.GetPosition(), 0u);
}

// An entry starts and resets to zero; the list's Reset empties it and its base.
TEST(RecordsIndex, ResetsClearEntriesAndLists) {
    CZeAviIndexChunk fresh;
    ExpectZero(fresh);
    CZeAviIndexChunk filled = Entry(3);
    EXPECT_EQ(filled.Reset(), S_OK);
    ExpectZero(filled);

    CZeAviIndexListChunk list;
    list.SetOffset(100);
    list.SetSize(200);
    for (uint32_t i = 0; i < 5; ++i) list.Append(Entry(i));
    list.Reset();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetOffset(), 0u);
    EXPECT_EQ(list.GetSize(), 0u);
}

CZeAviStreamList StreamOfType(uint32_t type) {
    CZeAviStreamList list;
    uint8_t block[80] = {};
    uint32_t size = 40;
    list.GetFormat().SetFormat(block, &size, &type);
    return list;
}

TEST(RecordsIndex, AddStreamFilesStreamsByFormatType) {
    CZeAviFile file;
    EXPECT_EQ(file.GetFirstVideoStream(), 0xFFFFFFFFu);
    EXPECT_EQ(CZeAviHeaderList(file).AddStream(StreamOfType(2)), S_OK);   // audio -> 0
    EXPECT_EQ(CZeAviHeaderList(file).AddStream(StreamOfType(0)), S_FALSE);  // left out
    EXPECT_EQ(CZeAviHeaderList(file).AddStream(StreamOfType(3)), S_OK);   // DV -> video 1
    EXPECT_EQ(CZeAviHeaderList(file).AddStream(StreamOfType(2)), S_OK);   // audio -> 2
    EXPECT_EQ(CZeAviHeaderList(file).AddStream(StreamOfType(1)), S_OK);   // video -> 3
    EXPECT_EQ(CZeAviHeaderList(file).AddStream(StreamOfType(1)), S_OK);   // video -> 4

    ASSERT_EQ(file.GetStreams().size(), 5u);
    EXPECT_EQ(file.GetSkippedStreams(), 1u);
    EXPECT_EQ(file.GetFirstVideoStream(), 1u);
    EXPECT_EQ(file.GetSecondVideoStream(), 3u);
    EXPECT_EQ(file.GetFirstAudioStream(), 0u);
    EXPECT_EQ(file.GetVideoStreams(), (std::vector<uint32_t>{1, 3, 4}));
    EXPECT_EQ(file.GetAudioStreams(), (std::vector<uint32_t>{0, 2}));
    EXPECT_TRUE(file.HasSecondVideoStream());
    for (uint32_t i = 0; i < 5; ++i) EXPECT_EQ(file.GetStreams()[i].GetStreamNumber(), i);

    file.SetFileName("kept.avi");
    file.Reset();
    EXPECT_TRUE(file.GetStreams().empty());
    EXPECT_TRUE(file.GetVideoStreams().empty());
    EXPECT_EQ(file.GetFirstAudioStream(), 0xFFFFFFFFu);
    EXPECT_EQ(file.GetSkippedStreams(), 0u);
    EXPECT_FALSE(file.HasSecondVideoStream());
    EXPECT_EQ(file.GetFileName(), "kept.avi");

    // One video stream is no second stream.
    CZeAviHeaderList(file).AddStream(StreamOfType(1));
    CZeAviHeaderList(file).AddStream(StreamOfType(2));
    EXPECT_EQ(file.GetFirstVideoStream(), 0u);
    EXPECT_EQ(file.GetSecondVideoStream(), 0xFFFFFFFFu);
    EXPECT_FALSE(file.HasSecondVideoStream());
}

TEST(RecordsIndex, FinishSetupMeasuresEachStreamsIndex) {
    CZeAviFile file;
    CZeAviStreamList list = StreamOfType(1);
    for (uint32_t i = 0; i < 4; ++i) list.GetIndexList().Append(Entry(i * 7));
    CZeAviHeaderList(file).AddStream(list);
    file.FinishSetup();
    EXPECT_EQ(file.GetStreams()[0].GetMaxChunkSize(), 22u);
    EXPECT_EQ(file.GetStreams()[0].GetTotalBytes(), 1u + 8u + 15u + 22u);
}

}  // namespace
