// Index records and the record tree: zeroed construction and reset, copies, index list
// assignment, and how AddStream files streams by their format type.
#include <gtest/gtest.h>

#include <memory>

#include "avi/ze_avi_base_index.h"
#include "avi/ze_avi_file.h"
#include "avi/ze_avi_header_list.h"
#include "avi/ze_avi_index_list_chunk.h"
#include "avi/ze_avi_super_index.h"

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

TEST(RecordsIndex, EntriesStartZeroResetToZeroAndCopyAllFields) {
    CZeAviIndexChunk fresh;
    ExpectZero(fresh);
    CZeAviIndexChunk filled = Entry(3);
    CZeAviIndexChunk copy(filled);
    EXPECT_EQ(copy.GetPosition(), 0x100000003ull);
    EXPECT_EQ(copy.GetOffset(), 30u);
    EXPECT_TRUE(copy.IsKeyFrame());
    EXPECT_EQ(filled.Reset(), S_OK);
    ExpectZero(filled);
    EXPECT_EQ(copy.GetSize(), 4u);  // the copy is its own
}

TEST(RecordsIndex, BaseAndSuperIndexResetEveryField) {
    CZeAviSuperIndex index;
    index.SetFcc(1);
    index.SetCb(2);
    index.SetLongsPerEntry(4);
    index.SetIndexSubType(5);
    index.SetIndexType(6);
    index.SetEntriesInUse(7);
    index.SetChunkId(8);
    index.SetOffset(0x123456789ull);
    index.SetReserved(2, 9);
    index.SetReserved(3, 10);  // ignored
    EXPECT_EQ(index.GetReserved(2), 9u);
    EXPECT_EQ(index.GetReserved(3), 0u);
    index.Entries().push_back(std::make_unique<CZeAviBaseIndex>());
    EXPECT_EQ(index.Reset(), S_OK);
    EXPECT_TRUE(index.Entries().empty());
    EXPECT_EQ(index.GetFcc() | index.GetCb() | index.GetEntriesInUse() | index.GetChunkId() | index.GetReserved(2), 0u);
    EXPECT_EQ(index.GetLongsPerEntry() | index.GetIndexSubType() | index.GetIndexType(), 0);
    EXPECT_EQ(index.GetOffset(), 0u);
}

TEST(RecordsIndex, AssigningAListGivesExactlyTheSourceEntriesInOrder) {
    CZeAviIndexListChunk source;
    source.SetOffset(100);
    source.SetSize(200);
    source.SetID(0x78646E69);
    for (uint32_t i = 0; i < 5; ++i) source.Append(Entry(i));
    CZeAviIndexListChunk target;
    for (uint32_t i = 0; i < 9; ++i) target.Append(Entry(50 + i));
    target = source;
    ASSERT_EQ(target.GetCount(), 5u);
    for (uint32_t i = 0; i < 5; ++i) EXPECT_EQ(target.At(i).GetOffset(), i * 10u);
    EXPECT_EQ(target.GetOffset(), 100u);
    EXPECT_EQ(target.GetSize(), 200u);
    EXPECT_EQ(target.GetID(), 0x78646E69u);
    target.Reset();
    EXPECT_TRUE(target.IsEmpty());
    EXPECT_EQ(target.GetOffset(), 0u);
    EXPECT_EQ(source.GetCount(), 5u);
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
}

TEST(RecordsIndex, OneVideoStreamIsNoSecondStream) {
    CZeAviFile file;
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
