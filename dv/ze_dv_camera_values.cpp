#include "dv/ze_dv_camera_values.h"

#include <cstring>

#include "dv/ze_dv_pack_location.h"

namespace ZeDV {
namespace {

using Id = CameraValueId;
constexpr uint8_t PC1 = 1, PC2 = 2, PC3 = 3, PC4 = 4;

// Some accessors deliberately share a decoder or an identifier with another one: the lens focus
// mode, focus and iris report the consumer identifiers 10, 11 and 5; GainMasterGain reads the GM
// bit; HorizontalDetail reads the master detail byte; DetailQF shares 48 with VerticalDetail and the
// three detail modes share 50; KneeSlope reads the knee point byte.
// clang-format off
constexpr CameraValue kCameraValues[] = {
    // id                      name                    accessor                    decoder                          descr  pack  low  high shift mask
    {Id::Iris,                 "Iris",                 "GetIris",                  "DecodeDVIris",                  5,  {0x70, PC1, 0, 0, 0x3F}},
    {Id::AEMode,               "AEMode",               "GetAEMode",                "DecodeDVAEMode",                6,  {0x70, PC2, 0, 4, 0x0F}},
    {Id::AGC,                  "AGC",                  "GetAGC",                   "DecodeDVAGC",                   7,  {0x70, PC2, 0, 0, 0x0F}},
    {Id::WBMode,               "WBMode",               "GetWBMode",                "DecodeDVWBMode",                8,  {0x70, PC3, 0, 5, 0x07}},
    {Id::WhiteBalance,         "WhiteBalance",         "GetWhiteBalance",          "DecodeDVWhiteBalance",          9,  {0x70, PC3, 0, 0, 0x1F}},
    {Id::FCM,                  "FCM",                  "GetFCM",                   "DecodeDVFCM",                   10, {0x70, PC4, 0, 7, 0x01}},
    {Id::Focus,                "Focus",                "GetFocus",                 "DecodeDVFocus",                 11, {0x70, PC4, 0, 0, 0x7F}},
    {Id::VPD,                  "VPD",                  "GetVPD",                   "DecodeDVVPD",                   12, {0x71, PC1, 0, 5, 0x01}},
    {Id::VPanningSpeed,        "VPanningSpeed",        "GetVPanningSpeed",         "DecodeDVVPanningSpeed",         13, {0x71, PC1, 0, 0, 0x1F}},
    {Id::IS,                   "IS",                   "GetIS",                    "DecodeDVIS",                    14, {0x71, PC2, 0, 7, 0x01}},
    {Id::HPD,                  "HPD",                  "GetHPD",                   "DecodeDVHPD",                   15, {0x71, PC2, 0, 6, 0x01}},
    {Id::HPanningSpeed,        "HPanningSpeed",        "GetHPanningSpeed",         "DecodeDVHPanningSpeed",         16, {0x71, PC2, 0, 0, 0x3F}},
    {Id::FocalLength,          "FocalLength",          "GetFocalLength",           "DecodeDVFocalLength",           17, {0x71, PC3, 0, 0, 0xFF}},
    {Id::ZEN,                  "ZEN",                  "GetZEN",                   "DecodeDVZEN",                   18, {0x71, PC4, 0, 7, 0x01}},
    {Id::UnitsOfEZoom,         "UnitsOfEZoom",         "GetUnitsOfEZoom",          "DecodeDVUnitsOfEZoom",          19, {0x71, PC4, 0, 4, 0x07}},
    {Id::LensFCM,              "LensFCM",              "GetLensFCM",               "DecodeDVLensFCM",               10, {0x73, PC1, 0, 7, 0x01}},
    {Id::LensFocus,            "LensFocus",            "GetLensFocus",             "DecodeDVLensFocus",             11, {0x73, PC1, 0, 0, 0x7F}},
    {Id::LensIris,             "LensIris",             "GetLensIris",              "DecodeDVLensIris",              5,  {0x73, PC2, 0, 0, 0xFF}},
    {Id::LensZoom,             "LensZoom",             "GetLensZoom",              "DecodeDVLensZoom",              23, {0x73, PC3, 0, 0, 0xFF}},
    {Id::LensExtender,         "LensExtender",         "GetLensExtender",          "DecodeDVLensExtender",          24, {0x73, PC4, 0, 2, 0x0F}},
    {Id::LensIrisCont,         "LensIrisCont",         "GetLensIrisCont",          "DecodeDVLensIrisCont",          25, {0x73, PC4, 0, 0, 0x03}},
    {Id::GainGM,               "GainGM",               "GetGainGM",                "DecodeDVGainGM",                26, {0x74, PC1, 0, 7, 0x01}},
    {Id::GainMasterGain,       "GainMasterGain",       "GetGainMasterGain",        "DecodeDVGainGM",                27, {0x74, PC1, 0, 7, 0x01}},
    {Id::GainRGain,            "GainRGain",            "GetGainRGain",             "DecodeDVGainRGain",             28, {0x74, PC2, 0, 0, 0xFF}},
    {Id::GainBGain,            "GainBGain",            "GetGainBGain",             "DecodeDVGainBGain",             29, {0x74, PC3, 0, 0, 0xFF}},
    {Id::GainNDFilter,         "GainNDFilter",         "GetGainNDFilter",          "DecodeDVGainNDFilter",          30, {0x74, PC4, 0, 4, 0x0F}},
    {Id::GainCCFilter,         "GainCCFilter",         "GetGainCCFilter",          "DecodeDVGainCCFilter",          31, {0x74, PC4, 0, 0, 0x0F}},
    {Id::PedestalG,            "PedestalG",            "GetPedestalG",             "DecodeDVPedestalG",             32, {0x75, PC1, 0, 0, 0xFF}},
    {Id::PedestalR,            "PedestalR",            "GetPedestalR",             "DecodeDVPedestalR",             33, {0x75, PC2, 0, 0, 0xFF}},
    {Id::PedestalB,            "PedestalB",            "GetPedestalB",             "DecodeDVPedestalB",             34, {0x75, PC3, 0, 0, 0xFF}},
    {Id::PedestalQF,           "PedestalQF",           "GetPedestalQF",            "DecodeDVPedestalQF",            35, {0x75, PC4, 0, 7, 0x01}},
    {Id::PedestalBP,           "PedestalBP",           "GetPedestalBP",            "DecodeDVPedestalBP",            36, {0x75, PC4, 0, 4, 0x03}},
    {Id::PedestalRP,           "PedestalRP",           "GetPedestalRP",            "DecodeDVPedestalRP",            37, {0x75, PC4, 0, 2, 0x03}},
    {Id::PedestalGP,           "PedestalGP",           "GetPedestalGP",            "DecodeDVPedestalGP",            38, {0x75, PC4, 0, 0, 0x03}},
    {Id::GammaG,               "GammaG",               "GetGammaG",                "DecodeDVGammaG",                39, {0x76, PC1, 0, 0, 0xFF}},
    {Id::GammaR,               "GammaR",               "GetGammaR",                "DecodeDVGammaR",                40, {0x76, PC2, 0, 0, 0xFF}},
    {Id::GammaB,               "GammaB",               "GetGammaB",                "DecodeDVGammaB",                41, {0x76, PC3, 0, 0, 0xFF}},
    {Id::GammaQF,              "GammaQF",              "GetGammaQF",               "DecodeDVGammaQF",               42, {0x76, PC4, 0, 7, 0x01}},
    {Id::GammaBG,              "GammaBG",              "GetGammaBG",               "DecodeDVGammaBG",               43, {0x76, PC4, 0, 4, 0x03}},
    {Id::GammaRG,              "GammaRG",              "GetGammaRG",               "DecodeDVGammaRG",               44, {0x76, PC4, 0, 2, 0x03}},
    {Id::GammaGG,              "GammaGG",              "GetGammaGG",               "DecodeDVGammaGG",               45, {0x76, PC4, 0, 0, 0x03}},
    {Id::MasterDetail,         "MasterDetail",         "GetMasterDetail",          "DecodeDVMasterDetail",          46, {0x77, PC1, 0, 0, 0xFF}},
    {Id::HorizontalDetail,     "HorizontalDetail",     "GetHorizontalDetail",      "DecodeDVMasterDetail",          47, {0x77, PC1, 0, 0, 0xFF}},
    {Id::VerticalDetail,       "VerticalDetail",       "GetVerticalDetail",        "DecodeDVVerticalDetail",        48, {0x77, PC3, 0, 0, 0xFF}},
    {Id::DetailQF,             "DetailQF",             "GetDetailQF",              "DecodeDVDetailQF",              48, {0x77, PC4, 0, 7, 0x01}},
    {Id::DetailVD,             "DetailVD",             "GetDetailVD",              "DecodeDVVD",                    50, {0x77, PC4, 0, 4, 0x03}},
    {Id::DetailHD,             "DetailHD",             "GetDetailHD",              "DecodeDVHD",                    50, {0x77, PC4, 0, 2, 0x03}},
    {Id::DetailMD,             "DetailMD",             "GetDetailMD",              "DecodeDVMD",                    50, {0x77, PC4, 0, 0, 0x03}},
    {Id::FlareG,               "FlareG",               "GetFlareG",                "DecodeDVFlareG",                54, {0x7C, PC1, 0, 0, 0xFF}},
    {Id::FlareR,               "FlareR",               "GetFlareR",                "DecodeDVFlareR",                55, {0x7C, PC2, 0, 0, 0xFF}},
    {Id::FlareB,               "FlareB",               "GetFlareB",                "DecodeDVFlareB",                56, {0x7C, PC3, 0, 0, 0xFF}},
    {Id::FlareQF,              "FlareQF",              "GetFlareQF",               "DecodeDVFlareQF",               57, {0x7C, PC4, 0, 7, 0x01}},
    {Id::FlareBF,              "FlareBF",              "GetFlareBF",               "DecodeDVFlareBF",               58, {0x7C, PC4, 0, 4, 0x03}},
    {Id::FlareRF,              "FlareRF",              "GetFlareRF",               "DecodeDVFlareRF",               59, {0x7C, PC4, 0, 2, 0x03}},
    {Id::FlareGF,              "FlareGF",              "GetFlareGF",               "DecodeDVFlareGF",               60, {0x7C, PC4, 0, 0, 0x03}},
    {Id::KneePoint,            "KneePoint",            "GetKneePoint",             "DecodeDVKneePoint",             75, {0x7E, PC1, 0, 0, 0xFF}},
    {Id::KneeSlope,            "KneeSlope",            "GetKneeSlope",             "DecodeDVKneePoint",             76, {0x7E, PC1, 0, 0, 0xFF}},
    {Id::ShutterSpeedConsumer, "ShutterSpeedConsumer", "GetShutterSpeedConsumer",  "DecodeDVShutterSpeedConsumer",  77, {0x7F, PC3, PC4, 0, 0xFFFF}},
};
// clang-format on

constexpr size_t kCount = sizeof(kCameraValues) / sizeof(kCameraValues[0]);

constexpr bool RowsFollowIdentifiers() {
    for (size_t i = 0; i < kCount; ++i) {
        if (static_cast<uint32_t>(kCameraValues[i].id) != i + 1) return false;
    }
    return true;
}
static_assert(RowsFollowIdentifiers(), "row i holds identifier i + 1, so lookup by identifier is an index");
static_assert(kCount == static_cast<size_t>(CameraValueId::ShutterSpeedConsumer), "one row per identifier");

}  // namespace

size_t CameraValueCount() {
    return kCount;
}

const CameraValue& CameraValueAt(size_t index) {
    return kCameraValues[index];
}

const CameraValue* FindCameraValue(CameraValueId id) {
    const uint32_t n = static_cast<uint32_t>(id);
    return n >= 1 && n <= kCount ? &kCameraValues[n - 1] : nullptr;
}

const CameraValue* FindCameraValue(const char* name) {
    if (name == nullptr) return nullptr;
    for (const CameraValue& v : kCameraValues) {
        if (std::strcmp(v.name, name) == 0) return &v;
    }
    return nullptr;
}

bool ReadCameraValue(const CameraValue& value, const uint8_t* frame, size_t frameSize, uint32_t* result) {
    CZeDVDataPack pack;
    if (!FindPack(frame, frameSize, value.field.pack, &pack)) return false;
    const uint32_t raw = pack.GetByte(value.field.lowByte) |
                         (value.field.highByte != 0 ? uint32_t{pack.GetByte(value.field.highByte)} << 8 : 0u);
    *result = (raw >> value.field.shift) & value.field.mask;
    return true;
}

}  // namespace ZeDV
