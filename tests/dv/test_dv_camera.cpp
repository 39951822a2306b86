// Camera values: the decoder and accessor rules over the table, its irregular rows, the time stamp.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "avi/ze_avi_file_parser.h"
#include "dv/ze_dv_camera_values.h"
#include "dv/ze_dv_rec_datetime.h"
#include "reader/status/ze_error_report.h"
#include "tests/dv/dv_test_frames.h"

namespace {

using ZeDV::CameraValueDescriptor;
using ZeDV::CameraValueId;

const ZeDV::CameraValue& Row(CameraValueId id) {
    const ZeDV::CameraValue* v = ZeDV::FindCameraValue(id);
    EXPECT_NE(v, nullptr);
    return *v;
}

// A frame with every camera pack, each data byte distinct, so a wrong byte or pack shows.
dvtest::Frame CameraFrame() {
    dvtest::Frame f = dvtest::MakeFrame(true);
    f.PutVaux(0, {0x70, 0xE5, 0xA3, 0xB4, 0xC6});
    f.PutVaux(1, {0x71, 0xF7, 0x5B, 0x42, 0x9E});
    f.PutVaux(2, {0x73, 0xD1, 0x22, 0x33, 0x5D});
    f.PutVaux(3, {0x74, 0x80, 0x44, 0x55, 0x7C});
    f.PutVaux(4, {0x75, 0x66, 0x77, 0x88, 0xB6});
    f.PutVaux(5, {0x76, 0x99, 0xAA, 0xBB, 0x1B});
    f.PutVaux(6, {0x77, 0xCC, 0xDD, 0xEE, 0xA7});
    f.PutVaux(7, {0x7C, 0x12, 0x23, 0x34, 0x39});
    f.PutVaux(8, {0x7E, 0x45, 0x56, 0x67, 0x78});
    f.PutVaux(9, {0x7F, 0xFF, 0xFF, 0x34, 0x92});
    return f;
}

uint32_t Decode(CameraValueId id, const dvtest::Frame& f) {
    uint32_t value = 0xDEADBEEF;
    EXPECT_EQ(CZeAviFileParser::DecodeCameraValue(Row(id), f.bytes.data(), f.bytes.size(), &value), S_OK);
    return value;
}

// Every row: its value in CameraFrame(), through the decoder and through the accessor.
// GainMasterGain, HorizontalDetail and KneeSlope share the field of another row.
TEST(DVCameraValues, EachRowTakesItsOwnBitsOfItsOwnPack) {
    const dvtest::Frame f = CameraFrame();
    const struct {
        CameraValueId id;
        uint32_t value;
    } rows[] = {
        {CameraValueId::Iris, 0x25}, {CameraValueId::AEMode, 0xA}, {CameraValueId::AGC, 0x3},
        {CameraValueId::WBMode, 5}, {CameraValueId::WhiteBalance, 0x14}, {CameraValueId::FCM, 1},
        {CameraValueId::Focus, 0x46}, {CameraValueId::VPD, 1}, {CameraValueId::VPanningSpeed, 0x17},
        {CameraValueId::IS, 0}, {CameraValueId::HPD, 1}, {CameraValueId::HPanningSpeed, 0x1B},
        {CameraValueId::FocalLength, 0x42}, {CameraValueId::ZEN, 1}, {CameraValueId::UnitsOfEZoom, 1},
        {CameraValueId::LensFCM, 1}, {CameraValueId::LensFocus, 0x51}, {CameraValueId::LensIris, 0x22},
        {CameraValueId::LensZoom, 0x33}, {CameraValueId::LensExtender, 7}, {CameraValueId::LensIrisCont, 1},
        {CameraValueId::GainGM, 1}, {CameraValueId::GainMasterGain, 1}, {CameraValueId::GainRGain, 0x44},
        {CameraValueId::GainBGain, 0x55}, {CameraValueId::GainNDFilter, 7},
        {CameraValueId::GainCCFilter, 0xC}, {CameraValueId::PedestalG, 0x66},
        {CameraValueId::PedestalR, 0x77}, {CameraValueId::PedestalB, 0x88}, {CameraValueId::PedestalQF, 1},
        {CameraValueId::PedestalBP, 3}, {CameraValueId::PedestalRP, 1}, {CameraValueId::PedestalGP, 2},
        {CameraValueId::GammaG, 0x99}, {CameraValueId::GammaR, 0xAA}, {CameraValueId::GammaB, 0xBB},
        {CameraValueId::GammaQF, 0}, {CameraValueId::GammaBG, 1}, {CameraValueId::GammaRG, 2},
        {CameraValueId::GammaGG, 3}, {CameraValueId::MasterDetail, 0xCC},
        {CameraValueId::HorizontalDetail, 0xCC}, {CameraValueId::VerticalDetail, 0xEE},
        {CameraValueId::DetailQF, 1}, {CameraValueId::DetailVD, 2}, {CameraValueId::DetailHD, 1},
        {CameraValueId::DetailMD, 3}, {CameraValueId::FlareG, 0x12}, {CameraValueId::FlareR, 0x23},
        {CameraValueId::FlareB, 0x34}, {CameraValueId::FlareQF, 0}, {CameraValueId::FlareBF, 3},
        {CameraValueId::FlareRF, 2}, {CameraValueId::FlareGF, 1}, {CameraValueId::KneePoint, 0x45},
        {CameraValueId::KneeSlope, 0x45}, {CameraValueId::ShutterSpeedConsumer, 0x9234},
    };
    ASSERT_EQ(sizeof(rows) / sizeof(rows[0]), ZeDV::CameraValueCount());
    for (const auto& e : rows) {
        SCOPED_TRACE(Row(e.id).name);
        EXPECT_EQ(Decode(e.id, f), e.value);
        uint32_t value = 0;
        CameraValueDescriptor d{11, 4, 0, 0, 22, &value};
        ASSERT_EQ(CZeAviFileParser::GetCameraValue(Row(e.id), f.bytes.data(), f.bytes.size(), &d), S_OK);
        EXPECT_EQ(value, e.value);
        EXPECT_EQ(d.type, 3u);
        EXPECT_EQ(d.word0, 11u);  // untouched
        EXPECT_EQ(d.word4, 22u);
    }
}

TEST(DVCameraValues, LookupByIdentifierAndNameAndTheirMisses) {
    std::set<uint32_t> ids;
    for (size_t i = 0; i < ZeDV::CameraValueCount(); ++i) {
        const ZeDV::CameraValue& v = ZeDV::CameraValueAt(i);
        ids.insert(static_cast<uint32_t>(v.id));
        EXPECT_EQ(std::string("Get") + v.name, v.accessorName);
        EXPECT_EQ(ZeDV::FindCameraValue(v.name), &v);
        EXPECT_EQ(ZeDV::FindCameraValue(v.id), &v);
    }
    EXPECT_EQ(ids.size(), ZeDV::CameraValueCount());
    EXPECT_EQ(ZeDV::FindCameraValue("Nothing"), nullptr);
    EXPECT_EQ(ZeDV::FindCameraValue(static_cast<CameraValueId>(0)), nullptr);
    EXPECT_EQ(ZeDV::FindCameraValue(static_cast<CameraValueId>(59)), nullptr);
}

TEST(DVCameraValues, FailuresOfDecoderAndAccessor) {
    SetErrorContext("");
    const dvtest::Frame empty = dvtest::MakeFrame(true);
    const ZeDV::CameraValue& iris = Row(CameraValueId::Iris);

    // Missing pack: E_ABORT, unreported; the decoder leaves its result alone, the accessor zeroes all.
    uint32_t value = 77;
    EXPECT_EQ(CZeAviFileParser::DecodeCameraValue(iris, empty.bytes.data(), empty.bytes.size(), &value), E_ABORT);
    EXPECT_EQ(value, 77u);
    CameraValueDescriptor d{1, 4, 2, 3, 4, &value};
    EXPECT_EQ(CZeAviFileParser::GetCameraValue(iris, empty.bytes.data(), empty.bytes.size(), &d), E_ABORT);
    EXPECT_EQ(d.word0 | d.size | d.type | d.parameterId | d.word4, 0u);
    EXPECT_EQ(d.result, nullptr);
    EXPECT_TRUE(GetReportList().empty());

    // Wrong size: reported under the accessor, descriptor unchanged.
    const dvtest::Frame f = CameraFrame();
    d = CameraValueDescriptor{1, 8, 2, 3, 4, &value};
    EXPECT_EQ(CZeAviFileParser::GetCameraValue(iris, f.bytes.data(), f.bytes.size(), &d), E_INVALIDARG);
    EXPECT_EQ(d.size, 8u);
    EXPECT_EQ(d.parameterId, 3u);
    EXPECT_EQ(d.result, &value);
    // Null frame or result pointer.
    EXPECT_EQ(CZeAviFileParser::GetCameraValue(iris, nullptr, 0, &d), E_POINTER);
    d.result = nullptr;
    EXPECT_EQ(CZeAviFileParser::GetCameraValue(iris, f.bytes.data(), f.bytes.size(), &d), E_POINTER);
    EXPECT_EQ(CZeAviFileParser::DecodeCameraValue(Row(CameraValueId::LensFocus), nullptr, 0, &value), E_POINTER);
    // A frame cut short: a pack inside it is found, one crossing its end is missing, unreported.
    EXPECT_EQ(CZeAviFileParser::DecodeCameraValue(iris, f.bytes.data(), 248, &value), S_OK);
    EXPECT_EQ(value, 0x25u);
    value = 77;
    EXPECT_EQ(CZeAviFileParser::DecodeCameraValue(iris, f.bytes.data(), 247, &value), E_ABORT);
    EXPECT_EQ(value, 77u);

    const std::vector<std::string> lines = GetReportList();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_NE(lines[0].find("[80070057] one or more arguments are invalid ### CZeAviFileParser::GetIris ###"),
              std::string::npos);
    EXPECT_NE(lines[1].find("CZeAviFileParser::GetIris"), std::string::npos);
    EXPECT_NE(lines[2].find("[80004003] invalid pointer ### CZeAviFileParser::GetIris"), std::string::npos);
    EXPECT_NE(lines[3].find("CZeAviFileParser::DecodeDVLensFocus"), std::string::npos);
}

ZeDV::ZeDVTimestamp Timestamp(uint8_t year, uint8_t month) {
    dvtest::Frame f = dvtest::MakeFrame(true);
    f.PutVaux(41, {0x62, 0xFF, 0xE7, month, year});
    f.PutVaux(42, {0x63, 0xFF, 0xA5, 0xB4, 0xD3});
    ZeDV::ZeDVTimestamp t{};
    EXPECT_EQ(CZeAviFileParser::DecodeDVTimestamp(f.bytes.data(), f.bytes.size(), &t), S_OK);
    return t;
}

TEST(DVTimestamp, FieldsInOrderAndTheCenturyCutAt70) {
    ZeDV::ZeDVTimestamp t = Timestamp(0x69, 0x12);
    EXPECT_EQ((std::vector<uint32_t>{25, 34, 13, 27, 11, 169}),
              (std::vector<uint32_t>{t.seconds, t.minutes, t.hours, t.day, t.month, t.year}));
    EXPECT_EQ(Timestamp(0x70, 0x01).year, 70u);
    EXPECT_EQ(Timestamp(0x70, 0x01).month, 0u);
    EXPECT_EQ(Timestamp(0x00, 0x09).year, 100u);

    dvtest::Frame f = dvtest::MakeFrame(true);
    f.PutVaux(41, {0x62, 0xFF, 0xE7, 0x01, 0x01});
    t.year = 1234;
    EXPECT_EQ(CZeAviFileParser::DecodeDVTimestamp(f.bytes.data(), f.bytes.size(), &t), E_ABORT);
    EXPECT_EQ(t.year, 1234u);
    // A frame that ends right after REC TIME still has its time stamp; one byte less and it has none.
    f.PutVaux(42, {0x63, 0xFF, 0xA5, 0xB4, 0xD3});
    EXPECT_EQ(CZeAviFileParser::DecodeDVTimestamp(f.bytes.data(), 468, &t), S_OK);
    EXPECT_EQ(t.hours, 13u);
    EXPECT_EQ(CZeAviFileParser::DecodeDVTimestamp(f.bytes.data(), 467, &t), E_ABORT);
    EXPECT_EQ(CZeAviFileParser::DecodeDVTimestamp(nullptr, 0, &t), E_POINTER);
}

}  // namespace
