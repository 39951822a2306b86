// Camcorder settings that DV frames carry in their camera packs (0x70-0x7F): one table of values,
// one rule that reads any of them out of a frame, and the six-word value descriptor through which
// the host's parameter exchange asks for one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/win32.h"

namespace ZeDV {

// Stable identifiers of the camera values, one per table row, for the parameter exchange and
// avihost. They never change meaning; new values get new numbers at the end.
enum class CameraValueId : uint32_t {
    Iris = 1, AEMode, AGC, WBMode, WhiteBalance, FCM, Focus,
    VPD, VPanningSpeed, IS, HPD, HPanningSpeed, FocalLength, ZEN, UnitsOfEZoom,
    LensFCM, LensFocus, LensIris, LensZoom, LensExtender, LensIrisCont,
    GainGM, GainMasterGain, GainRGain, GainBGain, GainNDFilter, GainCCFilter,
    PedestalG, PedestalR, PedestalB, PedestalQF, PedestalBP, PedestalRP, PedestalGP,
    GammaG, GammaR, GammaB, GammaQF, GammaBG, GammaRG, GammaGG,
    MasterDetail, HorizontalDetail, VerticalDetail, DetailQF, DetailVD, DetailHD, DetailMD,
    FlareG, FlareR, FlareB, FlareQF, FlareBF, FlareRF, FlareGF,
    KneePoint, KneeSlope, ShutterSpeedConsumer,
};

// Where a value sits: pack type, the pack byte holding its low 8 bits (1..4 for PC1..PC4), the
// byte holding bits 8-15 (0 for none), then shift right and mask.
struct CameraField {
    uint8_t pack;
    uint8_t lowByte;
    uint8_t highByte;
    uint8_t shift;
    uint16_t mask;
};

struct CameraValue {
    CameraValueId id;
    const char* name;           // accessor name without "Get"
    const char* accessorName;   // names under which failures are reported
    const char* decoderName;
    uint32_t descriptorId;      // parameter identifier the accessor writes into word 3
    CameraField field;
};

// The host exchange's value descriptor: the accessor reads word 1 (size, must be 4) and word 5
// (where the value goes) and writes word 2 (value type 3) and word 3 (descriptor identifier).
struct CameraValueDescriptor {
    uint32_t word0;
    uint32_t size;
    uint32_t type;
    uint32_t parameterId;
    uint32_t word4;
    uint32_t* result;
};

constexpr uint32_t kCameraValueType = 3;

size_t CameraValueCount();
// Row i of the table (i below CameraValueCount()), in identifier order.
const CameraValue& CameraValueAt(size_t index);
// The row of an identifier or a name ("Iris", "ShutterSpeedConsumer"); null when unknown.
const CameraValue* FindCameraValue(CameraValueId id);
const CameraValue* FindCameraValue(const char* name);

// Decoder rule: find the row's pack (first match of the pack search) and take its field into
// `result`. False, with `result` untouched, when the pack is not in the frame; the search stops at
// the frame's end, so in a short frame a pack that would cross it counts as not there. The parser's
// decoders and accessors check their arguments and report; this only reads.
bool ReadCameraValue(const CameraValue& value, const uint8_t* frame, size_t frameSize, uint32_t* result);

}  // namespace ZeDV
