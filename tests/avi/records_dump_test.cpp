// The text dumps of the chunk records, byte for byte: "%ld" of 32-bit fields as signed numbers,
// the base record right after each banner, the rectangle's print order and both format labels.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "avi/ze_avi_file.h"
#include "avi/ze_avi_index_records.h"
#include "avi/ze_avi_stream_list.h"

namespace {

const char kBaseZero[] = "### CZeAviFormTypes ###\ndwOffset : 0\ndwSize : 0\ndwID : 0\n";

TEST(RecordsDump, BaseFieldsPrintAsSigned32BitNumbers) {
    CZeAviFormTypes record;
    record.SetOffset(0xFFFFFFFFu);
    record.SetSize(0x80000000u);
    record.SetID(0x6C726473);  // "sdrl"
    EXPECT_EQ(record.Dump(),
              "### CZeAviFormTypes ###\ndwOffset : -1\ndwSize : -2147483648\ndwID : 1819436147\n");
    std::ostringstream out;
    record.Print(out);
    EXPECT_EQ(out.str(), record.Dump());
}

TEST(RecordsDump, MainHeaderListsEveryFieldAndTheReservedWords) {
    CZeAviHeader header;
    header.SetMicroSecPerFrame(40000);
    header.SetStreams(2);
    header.SetWidth(720);
    header.SetHeight(0xFFFFFFFEu);
    header.SetReserved(0, 1);
    header.SetReserved(3, 4);
    header.SetReserved(4, 99);   // ignored
    header.SetReserved(-1, 99);  // ignored
    EXPECT_EQ(header.GetReserved(4), 0u);
    EXPECT_EQ(header.GetReserved(-1), 0u);
    EXPECT_EQ(header.Dump(), std::string("### CZeAviHeader ###\n") + kBaseZero +
                                 "dwMicroSecPerFrame: 40000\ndwMaxBytesPerSec: 0\ndwPaddingGranularity: 0\n"
                                 "dwFlags: 0\ndwTotalFrames: 0\ndwInitialFrames: 0\ndwStreams: 2\n"
                                 "dwSuggestedBufferSize: 0\ndwWidth: 720\ndwHeight: -2\n"
                                 "dwReserved: 1 - 0 - 0 - 4\n");
}

TEST(RecordsDump, StreamHeaderShowsTheLowLengthWordAndPrintsLeftRightTopBottom) {
    CZeAviStreamHeader header;
    header.SetFccType(0x73646976);  // "vids"
    header.SetPriority(0xFFFF);
    header.SetLength(0x100000005ull);
    header.SetFrame(1, 2, 3, 4);
    EXPECT_EQ(header.GetLength(), 0x100000005ull);  // kept in full
    EXPECT_EQ(header.Dump(), std::string("### CZeAviStreamHeader ###\n") + kBaseZero +
                                 "fccType: 1935960438\nfccHandler: 0\ndwFlags: 0\nwPriority: 65535\n"
                                 "wLanguage: 0\ndwInitialFrames: 0\ndwScale: 0\ndwRate: 0\ndwStart: 0\n"
                                 "dwLength: 5\ndwSuggestedBufferSize: 0\ndwQuality: 0\ndwSampleSize: 0\n"
                                 "rcFrame left: 1\nrcFrame right: 3\nrcFrame top: 2\nrcFrame bottom: 4\n");
}

TEST(RecordsDump, FormatPrintsBothLabelsAndTheFieldsOfItsKind) {
    CZeAviStreamFormat none;
    EXPECT_EQ(none.Dump(), std::string("### CZeAviStreamFormat ###\n") + kBaseZero +
                               "dwFormatType : 0\nBITMAPINFO\nWAVEFORMATEX\n");

    BITMAPINFOHEADER bih = {};
    bih.biSize = 40;
    bih.biWidth = 720;
    bih.biHeight = -576;
    bih.biPlanes = 1;
    bih.biBitCount = 24;
    bih.biCompression = 0x64737664;  // "dvsd"
    bih.biSizeImage = 144000;
    uint32_t size = 40;
    uint32_t type = 1;
    CZeAviStreamFormat video;
    ASSERT_EQ(video.SetFormat(&bih, &size, &type), S_OK);
    EXPECT_EQ(video.Dump(), std::string("### CZeAviStreamFormat ###\n") +
                                "### CZeAviFormTypes ###\ndwOffset : 0\ndwSize : 40\ndwID : 0\n"
                                "dwFormatType : 1\nBITMAPINFO\nbiSize: 40\nbiWidth: 720\nbiHeight: -576\n"
                                "biPlanes: 1\nbiBitCount: 24\nbiCompression: dvsd\nbiSizeImage: 144000\n"
                                "biXPelsPerMeter: 0\nbiYPelsPerMeter: 0\nbiClrUsed: 0\nbiClrImportant: 0\n"
                                "WAVEFORMATEX\n");

    WAVEFORMATEX wfx = {1, 2, 48000, 192000, 4, 16, 0};
    size = 18;
    type = 2;
    CZeAviStreamFormat audio;
    ASSERT_EQ(audio.SetFormat(&wfx, &size, &type), S_OK);
    EXPECT_EQ(audio.Dump(), std::string("### CZeAviStreamFormat ###\n") +
                                "### CZeAviFormTypes ###\ndwOffset : 0\ndwSize : 18\ndwID : 0\n"
                                "dwFormatType : 2\nBITMAPINFO\nWAVEFORMATEX\nwFormatTag: 1\nnChannels: 2\n"
                                "nSamplesPerSec: 48000\nnAvgBytesPerSec: 192000\nnBlockAlign: 4\n"
                                "wBitsPerSample: 16\ncbSize: 0\n");
}

TEST(RecordsDump, IndexListShowsItsBaseOnly) {
    CZeAviIndexListChunk list;
    list.SetOffset(8);
    const std::string empty = list.Dump();
    for (int i = 0; i < 100; ++i) list.Append(CZeAviIndexChunk());
    EXPECT_EQ(list.Dump(), empty);
    EXPECT_EQ(empty, "### CZeAviIndexListChunk ###\n### CZeAviFormTypes ###\ndwOffset : 8\ndwSize : 0\ndwID : 0\n");
}

TEST(RecordsDump, FileDumpNestsHeaderAndNumberedStreams) {
    CZeAviFile file;
    file.Reset();
    file.SetFileName("clip.avi");
    CZeAviStreamList stream;
    stream.SetStreamName("Video");
    uint32_t size = 40;
    uint32_t type = 1;
    BITMAPINFOHEADER bih = {};
    ASSERT_EQ(stream.GetFormat().SetFormat(&bih, &size, &type), S_OK);
    CZeAviHeaderList(file).AddStream(stream);
    CZeAviHeaderList(file).AddStream(stream);

    const std::string streamDump = file.GetStreams()[0].Dump();
    EXPECT_EQ(streamDump.rfind("### CZeAviStreamList ###\nstreamName : Video\n" + std::string(kBaseZero) +
                                   "### CZeAviStreamHeader ###\n",
                               0),
              0u);
    EXPECT_NE(streamDump.find("### CZeAviStreamFormat ###"), std::string::npos);
    const std::string fileDump = file.Dump();
    EXPECT_EQ(fileDump.rfind("### CZeAviFile ###\nfileName : clip.avi\n", 0), 0u);
    const size_t first = fileDump.find("Stream: 0\n### CZeAviStreamList ###\nstreamName : Video\n");
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(fileDump.find("Stream: 1\n### CZeAviStreamList ###\nstreamName : Video\n", first), std::string::npos);
}

}  // namespace
