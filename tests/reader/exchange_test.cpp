// The parameter exchange: what Check says, what Get reads for headers, indexes, colour formats, DV
// parameters, recording dates and camera values, and what Set changes.
#include <cstring>

#include "tests/fixtures/ze_temp_file.h"
#include "tests/support/reader_module.h"
#include "tests/reader/reader_test_files.h"

namespace readertest {
namespace {

using zetest::Descriptor;
using zetest::ReaderTest;

const std::string kGet = "CZEAviReader::IZEClientServerExchange2::Get";
const std::string kSet = "CZEAviReader::IZEClientServerExchange2::Set";
const std::string kCheck = "CZEAviReader::IZEClientServerExchange2::Check";

class Exchange : public ReaderTest {
protected:
    void Open(const zetest::AviModel& plan) {
        layout = zetest::BuildAvi(plan);
        file = std::make_unique<zetest::TempFile>(layout.bytes);
        ASSERT_EQ(S_OK, exchange->Set(ZE_XP_FILE_PATH, 0, 0, ZE_XT_TEXT, static_cast<DWORD>(file->Path().size() + 1),
                                      file->c_str(), 0, nullptr));
    }
    template <class T>
    HRESULT Read(uint32_t id, uint32_t stream, uint32_t item, T* out, ZeExchangeValue* used = nullptr) {
        ZeExchangeValue value = Descriptor(out, sizeof(T));
        const HRESULT hr = exchange->Get(id, stream, item, &value);
        if (used) *used = value;
        return hr;
    }
    // The camera value of `row` in `frame`; the descriptor afterwards in *after.
    HRESULT Camera(uint32_t row, uint32_t frame, uint32_t* result, ZeExchangeValue* after) {
        *after = Descriptor(result, 4);
        return exchange->Get(ZE_XP_CAMERA_FIRST + row, 0, frame, after);
    }

    zetest::AviLayout layout;
    std::unique_ptr<zetest::TempFile> file;
};

TEST_F(Exchange, NothingOpenYet) {
    DWORD available = 9, type = 0, bytes = 0, count = 0;
    char* name = nullptr;
    ASSERT_EQ(S_OK, exchange->Check(ZE_XP_MAIN_HEADER, 0, 0, &available, &type, &bytes, &count, &name, nullptr));
    EXPECT_EQ(0u, available);
    EXPECT_EQ(ZE_XT_RECORD, type);
    EXPECT_EQ(sizeof(ZeXpMainHeader), bytes);
    ASSERT_NE(nullptr, name);
    EXPECT_STREQ("MainHeader", name);
    CoTaskMemFree(name);
    ZeXpMainHeader header;
    EXPECT_TRUE(Fails(Read(ZE_XP_MAIN_HEADER, 0, 0, &header), E_AVI_PARSE, kGet));
    EXPECT_TRUE(Fails(exchange->Check(0x7777, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
                      E_INVALIDARG, kCheck));
    EXPECT_TRUE(Fails(exchange->Get(ZE_XP_MAIN_HEADER, 0, 0, nullptr), E_POINTER, kGet));
    EXPECT_TRUE(Fails(exchange->Set(ZE_XP_FILE_PATH, 0, 0, ZE_XT_TEXT, 0, nullptr, 0, nullptr), E_POINTER, kSet));
    // An open that fails leaves the exchange ready for another file.
    EXPECT_TRUE(Fails(exchange->Set(ZE_XP_FILE_PATH, 0, 0, ZE_XT_TEXT, 10, "/no/such", 0, nullptr),
                      E_AVI_OPEN, "CZeAviFileParser::OpenAVIFile"));
    Open(VideoAvi({}));
    EXPECT_EQ(S_OK, Read(ZE_XP_MAIN_HEADER, 0, 0, &header));
}

TEST_F(Exchange, HeadersFormatsAndNames) {
    VideoFile plan;
    plan.audio = true;
    zetest::AviModel avi = VideoAvi(plan);
    avi.streams[1].name = "commentary";
    Open(avi);

    uint32_t streams = 0;
    ASSERT_EQ(S_OK, Read(ZE_XP_STREAM_COUNT, 0, 0, &streams));
    EXPECT_EQ(2u, streams);
    ZeXpMainHeader main;
    ZeExchangeValue used;
    ASSERT_EQ(S_OK, Read(ZE_XP_MAIN_HEADER, 0, 0, &main, &used));
    EXPECT_EQ(ZE_XT_RECORD, used.valueType);
    EXPECT_EQ(ZE_XP_MAIN_HEADER, used.paramId);
    EXPECT_EQ(1u, used.itemCount);
    EXPECT_EQ(40000u, main.dwMicroSecPerFrame);
    EXPECT_EQ(2u, main.dwStreams);
    EXPECT_EQ(3u, main.dwTotalFrames);
    EXPECT_EQ(320u, main.dwWidth);

    ZeXpStreamHeader header;
    ASSERT_EQ(S_OK, Read(ZE_XP_STREAM_HEADER, 1, 0, &header));
    EXPECT_EQ(0x73647561u, header.fccType);  // "auds"
    EXPECT_EQ(44100u, header.dwRate);
    ASSERT_EQ(S_OK, Read(ZE_XP_STREAM_HEADER, 0, 0, &header));
    EXPECT_EQ(0x44495658u, header.fccHandler);  // "XVID"
    EXPECT_EQ(3u, header.dwLength);
    EXPECT_EQ(320, header.rcFrameRight);

    uint32_t type = 0;
    ASSERT_EQ(S_OK, Read(ZE_XP_STREAM_FORMAT_TYPE, 1, 0, &type));
    EXPECT_EQ(2u, type);
    DWORD bytes = 0;
    ASSERT_EQ(S_OK, exchange->Check(ZE_XP_STREAM_FORMAT, 0, 0, nullptr, nullptr, &bytes, nullptr, nullptr, nullptr));
    std::vector<uint8_t> format(bytes);
    ZeExchangeValue value = Descriptor(format.data(), bytes);
    ASSERT_EQ(S_OK, exchange->Get(ZE_XP_STREAM_FORMAT, 0, 0, &value));
    EXPECT_EQ(avi.streams[0].format, format);

    char name[32] = {};
    value = Descriptor(name, sizeof(name));
    ASSERT_EQ(S_OK, exchange->Get(ZE_XP_STREAM_NAME, 1, 0, &value));
    EXPECT_STREQ("commentary", name);
    value = Descriptor(name, 4);
    EXPECT_TRUE(Fails(exchange->Get(ZE_XP_STREAM_NAME, 1, 0, &value), E_INVALIDARG, kGet));
    EXPECT_TRUE(Fails(Read(ZE_XP_STREAM_HEADER, 2, 0, &header), E_AVI_STREAMINDEX, kGet));
    uint64_t wrongSize = 0;
    EXPECT_TRUE(Fails(Read(ZE_XP_STREAM_COUNT, 0, 0, &wrongSize), E_INVALIDARG, kGet));

    ZeXpStreamRoles roles;
    ASSERT_EQ(S_OK, Read(ZE_XP_STREAM_ROLES, 0, 0, &roles));
    EXPECT_EQ(0, roles.firstVideo);
    EXPECT_EQ(-1, roles.secondVideo);
    EXPECT_EQ(1, roles.firstAudio);
}

TEST_F(Exchange, IndexEntriesInBatches) {
    VideoFile plan;
    plan.frames = 10;
    plan.audio = true;
    Open(VideoAvi(plan));
    uint32_t count = 0;
    ASSERT_EQ(S_OK, Read(ZE_XP_INDEX_COUNT, 0, 0, &count));
    ASSERT_EQ(10u, count);
    // Entries 7.. of the video stream into room for four: three come back.
    ZeXpIndexEntry entries[4] = {};
    ZeExchangeValue value = Descriptor(entries, sizeof(entries));
    ASSERT_EQ(S_OK, exchange->Get(ZE_XP_INDEX_ENTRIES, 0, 7, &value));
    ASSERT_EQ(3u, value.itemCount);
    for (uint32_t i = 0; i < 3; ++i) {
        const size_t chunk = 2 * (7 + i);  // video and audio chunks alternate
        EXPECT_EQ(layout.dataPos[chunk], entries[i].qwPosition);
        EXPECT_EQ(64u, entries[i].dwSize);
        EXPECT_EQ(0x63643030u, entries[i].ckid);  // "00dc"
        EXPECT_EQ(ZE_AVIIF_KEYFRAME, entries[i].dwFlags & ZE_AVIIF_KEYFRAME);
    }
    ZeXpIndexEntry one{};
    ASSERT_EQ(S_OK, Read(ZE_XP_INDEX_ENTRIES, 1, 9, &one));
    EXPECT_EQ(layout.dataPos[19], one.qwPosition);
    EXPECT_EQ(0x62773130u, one.ckid);  // "01wb"
    EXPECT_TRUE(Fails(Read(ZE_XP_INDEX_ENTRIES, 1, 10, &one), E_INVALIDARG, kGet));
}

TEST_F(Exchange, CheckSaysWhatExistsAndHowManyItemsThereAre) {
    VideoFile plan;
    plan.frames = 10;
    plan.audio = true;
    Open(VideoAvi(plan));  // two streams of ten chunks each, no DV
    struct Row {
        uint32_t id, stream, item;
        DWORD available, count;
    } rows[] = {
        {ZE_XP_STREAM_COUNT, 0, 0, 1, 1},        {ZE_XP_STREAM_HEADER, 1, 0, 1, 2},
        {ZE_XP_STREAM_HEADER, 2, 0, 0, 2},       {ZE_XP_STREAM_NAME, 0, 0, 1, 2},
        {ZE_XP_INDEX_ENTRIES, 1, 9, 1, 10},      {ZE_XP_INDEX_ENTRIES, 0, 10, 0, 10},
        {ZE_XP_INDEX_ENTRIES, 5, 0, 0, 0},       {ZE_XP_FRAME_COUNT, 0, 0, 1, 1},
        {ZE_XP_DV_VIDEO_PARAMS, 0, 0, 0, 1},     {ZE_XP_DV_RECORDING_TEXT, 0, 0, 0, 10},
        {ZE_XP_CAMERA_FIRST + 3, 0, 0, 0, 58},   {ZE_XP_COLOR_FORMAT_NAME, 0, 2, 1, 3},
        {ZE_XP_COLOR_FORMAT_NAME, 0, 3, 0, 3},   {ZE_XP_YUV_COLOR_FORMAT, 9, 9, 1, 1},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.id);
        DWORD available = 9, count = 99;
        ASSERT_EQ(S_OK,
                  exchange->Check(r.id, r.stream, r.item, &available, nullptr, nullptr, &count, nullptr, nullptr));
        EXPECT_EQ(r.available, available);
        EXPECT_EQ(r.count, count);
    }
    EXPECT_TRUE(NothingReported());
    // Identifiers between and past the parameters are unknown.
    for (uint32_t id : {0x000Cu, 0x0104u, ZE_XP_CAMERA_FIRST + ZE_XP_CAMERA_ROWS})
        EXPECT_TRUE(Fails(exchange->Check(id, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
                          E_INVALIDARG, kCheck));
}

TEST_F(Exchange, ColourFormats) {
    uint32_t count = 0;
    ASSERT_EQ(S_OK, Read(ZE_XP_COLOR_FORMAT_COUNT, 0, 0, &count));
    ASSERT_EQ(3u, count);
    const char* names[] = {"RGB24", "YUY2", "RGB32"};
    const GUID* subtypes[] = {&ZeMediaGuid::Rgb24, &ZeMediaGuid::Yuy2, &ZeMediaGuid::Rgb32};
    for (uint32_t i = 0; i < 3; ++i) {
        char name[16] = {};
        ZeExchangeValue value = Descriptor(name, sizeof(name));
        ASSERT_EQ(S_OK, exchange->Get(ZE_XP_COLOR_FORMAT_NAME, 0, i, &value));
        EXPECT_STREQ(names[i], name);
        GUID subtype{};
        ASSERT_EQ(S_OK, Read(ZE_XP_COLOR_FORMAT_SUBTYPE, 0, i, &subtype));
        EXPECT_TRUE(IsEqualGUID(*subtypes[i], subtype));
    }
    GUID preferred{};
    ASSERT_EQ(S_OK, Read(ZE_XP_PREFERRED_COLOR_FORMAT, 0, 0, &preferred));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Rgb24, preferred));
    ASSERT_EQ(S_OK, exchange->Set(ZE_XP_PREFERRED_COLOR_FORMAT, 0, 0, ZE_XT_GUID, sizeof(GUID), &ZeMediaGuid::Rgb32, 0,
                                  nullptr));
    ASSERT_EQ(S_OK, Read(ZE_XP_PREFERRED_COLOR_FORMAT, 0, 0, &preferred));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Rgb32, preferred));
    EXPECT_EQ(E_AVI_COLORSPACE, exchange->Set(ZE_XP_YUV_COLOR_FORMAT, 0, 0, ZE_XT_GUID, sizeof(GUID),
                                              &ZeMediaGuid::Pcm, 0, nullptr));
    EXPECT_TRUE(ReportedOnce(E_AVI_COLORSPACE, kSet));
    EXPECT_TRUE(Fails(exchange->Set(ZE_XP_STREAM_COUNT, 0, 0, ZE_XT_UINT32, 4, &count, 0, nullptr),
                      E_INVALIDARG, kSet));
    char small[3];
    ZeExchangeValue value = Descriptor(small, sizeof(small));
    EXPECT_TRUE(Fails(exchange->Get(ZE_XP_COLOR_FORMAT_NAME, 0, 0, &value), E_INVALIDARG, kGet));
}

// Two DV frames: the first carries camera, lens, shutter and date packs, the second none.
class DvExchange : public Exchange {
protected:
    void SetUp() override {
        Exchange::SetUp();
        std::vector<uint8_t> rich = DvFrame(1);
        PutPack(rich, PackSearchOffset(0), 0x70, 0xC0 | 26, 0x35, 0x47, 0x85);
        PutPack(rich, PackSearchOffset(1), 0x73, 0x0A, 0x9C, 0x40, 0x3D);
        PutPack(rich, PackSearchOffset(2), 0x7F, 0xFF, 0xFF, 0x34, 0x12);
        PutPack(rich, PackSearchOffset(3), 0x62, 0xFF, 0x31, 0x12, 0x24);
        PutPack(rich, PackSearchOffset(4), 0x63, 0xFF, 0x59, 0x58, 0x23);
        Open(DvAvi({rich, DvFrame(2)}, 0));
    }
};

TEST_F(DvExchange, CameraValuesThroughTheirAccessors) {
    struct Row {
        uint32_t row;
        uint32_t value;
        uint32_t id;
    } rows[] = {
        {0, 26, 5},      // Iris
        {1, 3, 6},       // AEMode
        {2, 5, 7},       // AGC
        {3, 2, 8},       // WBMode
        {4, 7, 9},       // WhiteBalance
        {5, 1, 10},      // FCM
        {6, 5, 11},      // Focus
        {15, 0, 10},     // LensFCM reports the consumer identifier
        {16, 10, 11},    // LensFocus
        {17, 0x9C, 5},   // LensIris
        {18, 0x40, 23},  // LensZoom
        {19, 0xF, 24},   // LensExtender: bits 2-5 of 0x3D
        {20, 1, 25},     // LensIrisCont
        {57, 0x1234, 77},  // ShutterSpeedConsumer
    };
    for (const Row& r : rows) {
        uint32_t result = 0;
        ZeExchangeValue after;
        ASSERT_EQ(S_OK, Camera(r.row, 0, &result, &after)) << "row " << r.row;
        EXPECT_EQ(r.value, result) << "row " << r.row;
        EXPECT_EQ(r.id, after.paramId) << "row " << r.row;
        EXPECT_EQ(ZE_XT_UINT32, after.valueType);
        EXPECT_EQ(1u, after.itemCount);
    }
    EXPECT_TRUE(NothingReported());

    DWORD count = 0;
    char* name = nullptr;
    ASSERT_EQ(S_OK, exchange->Check(ZE_XP_CAMERA_FIRST + 57, 0, 0, nullptr, nullptr, nullptr, &count, &name, nullptr));
    EXPECT_EQ(ZE_XP_CAMERA_ROWS, count);
    EXPECT_STREQ("ShutterSpeedConsumer", name);
    CoTaskMemFree(name);
}

TEST_F(DvExchange, MissingPacksAndBadDescriptors) {
    // The second frame has no camera pack: E_ABORT, descriptor zeroed, nothing reported.
    uint32_t result = 99;
    ZeExchangeValue after;
    EXPECT_EQ(E_ABORT, Camera(0, 1, &result, &after));
    EXPECT_TRUE(after.cbStruct == 0 && after.cbValue == 0 && after.pValue == nullptr);
    EXPECT_EQ(99u, result);
    EXPECT_TRUE(NothingReported());
    // A value size other than 4 is refused by the accessor, which reports it; the descriptor stays.
    uint64_t wide = 0;
    ZeExchangeValue value = Descriptor(&wide, sizeof(wide));
    EXPECT_EQ(E_INVALIDARG, exchange->Get(ZE_XP_CAMERA_FIRST, 0, 0, &value));
    EXPECT_EQ(sizeof(wide), value.cbValue);
    EXPECT_EQ(1u, TakeReports().size());
    // A frame past the end.
    EXPECT_TRUE(Fails(Camera(0, 2, &result, &after), E_INVALIDARG, kGet));
}

TEST_F(DvExchange, RecordingDateAndParameters) {
    char text[128] = {};
    ZeExchangeValue value = Descriptor(text, sizeof(text));
    ASSERT_EQ(S_OK, exchange->Get(ZE_XP_DV_RECORDING_TEXT, 0, 0, &value));
    EXPECT_STREQ("31.12.2024 23:58:59", text);
    ZeXpDVTimestamp stamp{};
    ASSERT_EQ(S_OK, Read(ZE_XP_DV_TIMESTAMP, 0, 0, &stamp));
    EXPECT_EQ((std::vector<uint32_t>{59, 58, 23, 31, 11, 124}),
              (std::vector<uint32_t>{stamp.seconds, stamp.minutes, stamp.hours, stamp.dayOfMonth, stamp.month,
                                     stamp.yearsSince1900}));
    EXPECT_EQ(E_ABORT, Read(ZE_XP_DV_TIMESTAMP, 0, 1, &stamp));
    value = Descriptor(text, sizeof(text));
    EXPECT_EQ(E_ABORT, exchange->Get(ZE_XP_DV_RECORDING_TEXT, 0, 1, &value));
    EXPECT_TRUE(NothingReported());

    ZeXpDVVideoParams params{};
    ASSERT_EQ(S_OK, Read(ZE_XP_DV_VIDEO_PARAMS, 0, 0, &params));
    // The file's parameters come from the frame after the initial frames, the second one here, which
    // carries no date.
    EXPECT_STREQ("", params.recordingDateTime);
    ZeXpDVAudioParams audioParams{};
    ASSERT_EQ(S_OK, Read(ZE_XP_DV_AUDIO_PARAMS, 0, 0, &audioParams));
}

TEST_F(Exchange, DvValuesOfOtherFiles) {
    Open(VideoAvi({}));
    ZeXpDVVideoParams params{};
    EXPECT_TRUE(Fails(Read(ZE_XP_DV_VIDEO_PARAMS, 0, 0, &params), E_AVI_NOVALIDFILE, kGet));
    uint32_t result = 0;
    ZeExchangeValue after;
    EXPECT_TRUE(Fails(Camera(0, 0, &result, &after), E_AVI_NOVALIDFILE, kGet));
    DWORD available = 1;
    ASSERT_EQ(S_OK, exchange->Check(ZE_XP_CAMERA_FIRST, 0, 0, &available, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(0u, available);
}

}  // namespace
}  // namespace readertest
