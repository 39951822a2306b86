// Index building: idx1 offsets of both kinds and the base found by the first-video-chunk scan,
// idx1 entries of odd names and foreign streams, OpenDML key-frame bits and bounds, and which
// index wins.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "tests/avi/parser_test_support.h"

namespace zetest {
namespace {

std::vector<uint64_t> Positions(const CZeAviFileParser& parser, uint32_t stream) {
    std::vector<uint64_t> out;
    const CZeAviStreamList* list = parser.GetStream(stream);
    if (list == nullptr) return out;
    for (const CZeAviIndexChunk& e : list->GetIndexList().Entries()) out.push_back(e.GetPosition());
    return out;
}

std::vector<uint64_t> DataPositions(const AviModel& model, const AviLayout& layout, const std::string& type) {
    std::vector<uint64_t> out;
    for (size_t i = 0; i < model.chunks.size(); ++i) {
        if (model.chunks[i].ckid.substr(2) == type && model.chunks[i].indexed) out.push_back(layout.dataPos[i]);
    }
    return out;
}

TEST(ParserIndex, Idx1OffsetsFromMoviAndFromTheFileStartGiveTheSamePositions) {
    for (Idx1 kind : {Idx1::FromMovi, Idx1::Absolute}) {
        const AviModel model = VideoAndPcmModel(6, 101, 64, kind);
        const AviLayout layout = BuildAvi(model);
        ParsedBytes f(layout.bytes);
        ASSERT_EQ(f.parse, S_OK);
        EXPECT_EQ(Positions(f.parser, 0), DataPositions(model, layout, "dc"));
        EXPECT_EQ(Positions(f.parser, 1), DataPositions(model, layout, "wb"));
        const CZeAviIndexListChunk& audio = f.parser.GetStream(1)->GetIndexList();
        const CZeAviIndexListChunk& video = f.parser.GetStream(0)->GetIndexList();
        // Audio entries keep the resolved position in both fields, frames their index offset.
        EXPECT_EQ(audio.At(0).GetOffset(), audio.At(0).GetPosition());
        const uint64_t header = layout.headerPos[2];
        EXPECT_EQ(video.At(1).GetOffset(), kind == Idx1::Absolute ? header : header - (layout.moviListPos[0] + 8));
        EXPECT_EQ(video.At(0).GetSize(), 101u);
        EXPECT_EQ(video.At(0).GetChunkId(), ZeOSAL::MakeFourCC("00dc"));
        EXPECT_EQ(video.At(0).GetFlags(), 0x10u);
    }
}

TEST(ParserIndex, Idx1NamesAreReadLikeAtoiAndTypesSortTheEntries) {
    AviModel model = VideoAndPcmModel(2, 20, 16);
    model.extraIdx1 = {
        {"0Adc", 0, 4, 7},    // stream 0 (the letter ends the number), a frame
        {"ix00", 0, 4, 7},    // an index chunk's name: not a frame, not audio
        {"00XY", 0, 4, 7},    // unknown type
        {"01WB", 0, 4, 9},    // audio, type compared without case
        {"00__", 0, 4, 11},   // frame of an interleaved stream
        {"05dc", 0, 4, 13},   // no stream 5 in a file of 2
        {"-1dc", 0, 4, 13},   // negative: no such stream either
    };
    ParsedBytes f(BuildAvi(model).bytes);
    ASSERT_EQ(f.parse, S_OK);
    const CZeAviIndexListChunk& video = f.parser.GetStream(0)->GetIndexList();
    const CZeAviIndexListChunk& audio = f.parser.GetStream(1)->GetIndexList();
    ASSERT_EQ(video.GetCount(), 4u);
    ASSERT_EQ(audio.GetCount(), 3u);
    EXPECT_EQ(video.At(2).GetChunkId(), ZeOSAL::MakeFourCC("0Adc"));
    EXPECT_EQ(video.At(2).GetSize(), 7u);
    EXPECT_EQ(video.At(3).GetSize(), 11u);
    EXPECT_EQ(audio.At(2).GetSize(), 9u);
    EXPECT_EQ(CountReports(E_AVI_STREAMINDEX, "ParseStreamIdx1Chunk"), 2);
}

TEST(ParserIndex, Idx1IgnoresATrailingPartialEntryAndRejectsAnEmptyOne) {
    const AviLayout layout = BuildAvi(VideoModel(3, 10));
    std::vector<uint8_t> bytes = layout.bytes;
    bytes.insert(bytes.end(), {1, 2, 3, 4, 5});
    PatchU32(bytes, layout.idx1Pos + 4, 3 * 16 + 5);
    ParsedBytes f(bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(f.parser.GetVideoFrameCount(), 3u);

    // An idx1 of size 0 is not read at all; an idx1 claiming more than the file holds is a short read.
    std::vector<uint8_t> empty = layout.bytes;
    PatchU32(empty, layout.idx1Pos + 4, 0);
    ParsedBytes e(empty);
    EXPECT_EQ(e.parse, S_OK);
    EXPECT_EQ(e.parser.GetVideoFrameCount(), 0u);

    std::vector<uint8_t> huge = layout.bytes;
    PatchU32(huge, layout.idx1Pos + 4, 0xFFFFFFF0u);
    ParsedBytes h(huge);
    EXPECT_EQ(h.parse, E_AVI_READ);
    EXPECT_EQ(CountReports(E_AVI_READ, "ParseStreamIdx1Chunk"), 1);
}

// What a scan that seeks to every position and reads 4 bytes there finds.
uint64_t ScanOneByOne(const std::vector<uint8_t>& bytes, uint64_t start) {
    for (uint64_t p = start; p < start + 0x400000 && p + 4 <= bytes.size(); ++p) {
        const uint8_t* q = &bytes[p];
        if (q[0] == '0' && q[1] == '0' && std::tolower(q[2]) == 'd' && (std::tolower(q[3]) == 'b' || std::tolower(q[3]) == 'c'))
            return p + 8;
    }
    return 0;
}

// Absolute idx1 offsets are resolved through the first "00db"/"00dc" the scan meets from the
// 'movi' list on; the scan reads in windows, so names on and around window edges are tried.
TEST(ParserIndex, FirstVideoChunkScanFindsWhatAByteByByteScanFinds) {
    const size_t movePositions[] = {0, 65511, 65512, 65513, 65514, 65515, 65516, 131045, 131046, 131047};
    for (size_t junk : movePositions) {
        for (bool decoy : {false, true}) {
            AviModel model = VideoModel(0, 0, Idx1::Absolute);
            std::vector<uint8_t> filler(junk, 0);
            if (decoy && junk >= 8) std::memcpy(&filler[junk - 6], "00DB", 4);  // a name inside other data
            ChunkModel skip{"JUNK", filler};
            skip.indexed = false;
            model.chunks.push_back(skip);
            for (ChunkModel& c : PatternChunks("00dc", 3, 30)) model.chunks.push_back(c);
            const AviLayout layout = BuildAvi(model);
            const uint64_t found = ScanOneByOne(layout.bytes, layout.moviListPos[0]);
            ASSERT_NE(found, 0u);
            ParsedBytes f(layout.bytes);
            ASSERT_EQ(f.parse, S_OK) << junk;
            const std::vector<uint64_t> positions = Positions(f.parser, 0);
            ASSERT_EQ(positions.size(), 3u);
            // The first entry's offset is its chunk's position in the file.
            const uint64_t shift = found - (layout.headerPos[1] + 8);
            for (size_t i = 0; i < 3; ++i) EXPECT_EQ(positions[i], layout.dataPos[i + 1] + shift) << junk << " " << decoy;
            EXPECT_EQ(shift == 0, !decoy || junk < 8);
        }
    }
}

TEST(ParserIndex, FirstVideoChunkBeyondTheScanRangeLeavesTheStartingBase) {
    AviModel model = VideoModel(0, 0, Idx1::Absolute);
    ChunkModel skip{"JUNK", std::vector<uint8_t>(0x400000, 0)};
    skip.indexed = false;
    model.chunks.push_back(skip);
    for (ChunkModel& c : PatternChunks("00dc", 2, 30)) model.chunks.push_back(c);
    const AviLayout layout = BuildAvi(model);
    ASSERT_EQ(ScanOneByOne(layout.bytes, layout.moviListPos[0]), 0u);
    ParsedBytes f(layout.bytes);
    ASSERT_EQ(f.parse, S_OK);
    // The offsets are taken as counted from 'movi': the positions land past the real chunks.
    EXPECT_EQ(Positions(f.parser, 0)[0], layout.headerPos[1] + layout.moviListPos[0] + 16);
}

AviModel OdmlModel(size_t frames, uint32_t entriesPerIx) {
    AviModel model = VideoModel(frames, 40, Idx1::None);
    model.streams[0].superIndex = SuperIndex::Full;
    model.entriesPerIx = entriesPerIx;
    for (size_t i = 0; i < frames; ++i) model.chunks[i].flags = (i % 3 == 0) ? kAviKeyFrame : 0;
    return model;
}

TEST(ParserIndex, StandardIndexEntriesCarryTheKeyFrameBitInTheirSize) {
    const AviModel model = OdmlModel(9, 4);
    const AviLayout layout = BuildAvi(model);
    ParsedBytes f(layout.bytes);
    ASSERT_EQ(f.parse, S_OK);
    const CZeAviIndexListChunk& index = f.parser.GetStream(0)->GetIndexList();
    ASSERT_EQ(index.GetCount(), 9u);
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(index.At(i).GetPosition(), layout.dataPos[i]);
        EXPECT_EQ(index.At(i).GetSize(), 40u) << i;
        EXPECT_EQ(index.At(i).GetFlags(), i % 3 == 0 ? 0x10u : 0u) << i;
        EXPECT_EQ(index.At(i).GetChunkId(), ZeOSAL::MakeFourCC("00dc"));
    }
    EXPECT_EQ(index.GetID(), ZeOSAL::MakeFourCC("indx"));
    EXPECT_EQ(index.GetOffset(), FindText(layout.bytes, "indx") + 8);

    // The bit leaves the size only when the size word exceeds the suggested buffer size; with a
    // suggested size above 0x80000000 it stays in the non-key sizes.
    AviModel big = model;
    big.suggestedBufferSize = 0x90000000u;
    ParsedBytes g(BuildAvi(big).bytes);
    ASSERT_EQ(g.parse, S_OK);
    EXPECT_EQ(g.parser.GetStream(0)->GetIndexList().At(1).GetSize(), 0x80000028u);
    EXPECT_EQ(g.parser.GetStream(0)->GetIndexList().At(0).GetSize(), 40u);
}

// Entry counts beyond the bound fail with the stream index code; within the bound but beyond the
// file, a short read of the array, found before anything is allocated, whether the array misses
// the end by one entry or by hundreds of megabytes.
TEST(ParserIndex, OversizedStandardIndexesFailBeforeTheyAreRead) {
    const AviLayout layout = BuildAvi(OdmlModel(4, 0));
    const uint64_t arrayStart = layout.ixPos[0][0] + 32;
    const uint32_t justPast = static_cast<uint32_t>((layout.bytes.size() - arrayStart) / 8 + 1);
    struct Case {
        uint32_t entries;
        HRESULT expected;
    };
    const Case cases[] = {{67108865u, E_AVI_STREAMINDEX}, {0x20000001u, E_AVI_STREAMINDEX},
                          {0xFFFFFFFFu, E_AVI_STREAMINDEX}, {justPast, E_AVI_READ}, {67108864u, E_AVI_READ}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entries);
        std::vector<uint8_t> bytes = layout.bytes;
        PatchU32(bytes, layout.ixPos[0][0] + 12, c.entries);
        ParsedBytes f(bytes);
        EXPECT_EQ(f.parse, c.expected);
        EXPECT_EQ(CountReports(c.expected, "FillSuperIndex"), 1);
        EXPECT_EQ(GetReportList().size(), 1u);
    }
}

// Super index entries that all name the same standard index would grow the index without end;
// the index stops at the number of 8-byte entries the file could hold.
TEST(ParserIndex, RepeatedStandardIndexesStopAtTheFilesCapacity) {
    const AviLayout layout = BuildAvi(OdmlModel(400, 1));
    std::vector<uint8_t> bytes = layout.bytes;
    const uint64_t first = layout.ixPos[0][0];
    const uint32_t entries = static_cast<uint32_t>(bytes.size() / 8 / 50);
    PatchU32(bytes, first + 12, entries);  // its array now runs on through the following chunks
    const size_t indx = FindText(bytes, "indx");
    for (size_t i = 0; i < 400; ++i) PatchU64(bytes, indx + 32 + 16 * i, first);
    ParsedBytes f(bytes);
    EXPECT_EQ(f.parse, E_AVI_STREAMINDEX);
    EXPECT_EQ(CountReports(E_AVI_STREAMINDEX, "FillSuperIndex"), 1);

    // The same holds across streams, whether the first of them is kept or left out: two streams
    // whose super indexes name one standard index that fills most of the file would together read
    // more entries than the file has room for.
    for (bool leftOut : {false, true}) {
        AviModel two = VideoModel(0, 0, Idx1::None);
        two.streams = {leftOut ? CompressedAudioStream(0x55, 2, 48000) : VideoStream("DIB ", 32, 16),
                       VideoStream("DIB ", 32, 16)};
        two.streams[0].superIndex = SuperIndex::Full;
        two.streams[1].superIndex = SuperIndex::Full;
        two.chunks = PatternChunks(leftOut ? "00wb" : "00dc", 200, 40, 3);
        const std::vector<ChunkModel> second = PatternChunks("01dc", 200, 40, 7);
        two.chunks.insert(two.chunks.end(), second.begin(), second.end());
        const AviLayout shared = BuildAvi(two);
        bytes = shared.bytes;
        // The first frame's data becomes a standard index whose entries run on to the end of the file.
        const uint64_t ix = shared.dataPos[0];
        const uint32_t count = static_cast<uint32_t>((bytes.size() - ix - 32) / 8);
        ASSERT_LE(count, bytes.size() / 8);
        ASSERT_GT(2 * static_cast<uint64_t>(count), bytes.size() / 8);
        std::memcpy(&bytes[ix], "ix00", 4);
        PatchU32(bytes, ix + 4, 24 + 8 * count);
        PatchU32(bytes, ix + 8, 0x01000002u);  // two longs an entry, index of chunks
        PatchU32(bytes, ix + 12, count);
        std::memcpy(&bytes[ix + 16], "00dc", 4);
        PatchU64(bytes, ix + 20, 0);
        const size_t firstIndx = FindText(bytes, "indx");
        const size_t secondIndx = FindText(bytes, "indx", firstIndx + 4);
        ASSERT_NE(secondIndx, std::string::npos);
        PatchU64(bytes, firstIndx + 32, ix);
        PatchU64(bytes, secondIndx + 32, ix);
        ParsedBytes g(bytes);
        EXPECT_EQ(g.parse, E_AVI_STREAMINDEX) << leftOut;
        EXPECT_EQ(CountReports(E_AVI_STREAMINDEX, "FillSuperIndex"), 1) << leftOut;
    }
}

// A super index entry pointing near the top of the 64-bit range reads nothing from anywhere.
TEST(ParserIndex, StandardIndexPositionsPastTheFileFailAsReads) {
    const AviLayout layout = BuildAvi(OdmlModel(4, 0));
    const uint64_t positions[] = {0xFFFFFFFFFFFFFFFEull, 0x7FFFFFFF00000000ull, layout.bytes.size() + 1};
    for (uint64_t position : positions) {
        std::vector<uint8_t> bytes = layout.bytes;
        PatchU64(bytes, FindText(bytes, "indx") + 32, position);
        ParsedBytes f(bytes);
        EXPECT_EQ(f.parse, E_AVI_READ) << position;
        EXPECT_EQ(CountReports(E_AVI_READ, "Read"), 1) << position;
    }
}

// An empty super index on the principal stream falls back to idx1 for every stream; a full one
// keeps idx1 unread, so the audio, indexed only there, has no entries.
TEST(ParserIndex, ASuperIndexOnThePrincipalStreamDecidesWhetherIdx1IsRead) {
    for (SuperIndex kind : {SuperIndex::Empty, SuperIndex::Full}) {
        SCOPED_TRACE(kind == SuperIndex::Full ? "full" : "empty");
        AviModel model = VideoAndPcmModel(4, 30, 16);
        model.streams[0].superIndex = kind;
        const AviLayout layout = BuildAvi(model);
        ParsedBytes f(layout.bytes);
        ASSERT_EQ(f.parse, S_OK);
        EXPECT_EQ(Positions(f.parser, 0), DataPositions(model, layout, "dc"));
        EXPECT_EQ(f.parser.GetStream(1)->GetIndexList().GetCount(), kind == SuperIndex::Full ? 0u : 4u);
    }
}

TEST(ParserIndex, SuperIndexesSpanSeveralRiffParts) {
    AviModel model = OdmlModel(10, 3);
    model.streams.push_back(PcmStream(1, 8000, 16));
    model.streams[1].superIndex = SuperIndex::Full;
    for (size_t i = 0; i < 10; ++i) {
        model.chunks[i].part = i < 5 ? 0 : 1;
        ChunkModel pcm{"01wb", PatternBytes(50, static_cast<uint32_t>(i))};
        pcm.part = model.chunks[i].part;
        model.chunks.push_back(pcm);
    }
    model.ixInsideMovi = false;
    const AviLayout layout = BuildAvi(model);
    ParsedBytes f(layout.bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(Positions(f.parser, 0), DataPositions(model, layout, "dc"));
    EXPECT_EQ(Positions(f.parser, 1), DataPositions(model, layout, "wb"));
}

}  // namespace
}  // namespace zetest
