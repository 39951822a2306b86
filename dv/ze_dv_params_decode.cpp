#include "dv/ze_dv_params_decode.h"

#include "dv/ze_dv_pack_location.h"
#include "dv/ze_dv_rec_datetime.h"

namespace ZeDV {
namespace {

struct Aspect {
    double ratio;
    uint32_t displayCode;
};

constexpr double k4by3 = 4.0 / 3.0;
constexpr double k14by9 = 14.0 / 9.0;
constexpr double k16by9 = 16.0 / 9.0;

// Aspect ratio and display code by display select mode d (0-7) for broadcast system s = 1 and 0.
constexpr Aspect kSystem1Aspect[8] = {
    {k4by3, 0}, {k14by9, 1}, {k14by9, 2}, {k16by9, 1}, {k16by9, 2}, {k16by9, 1}, {k14by9, 0}, {k16by9, 0},
};
constexpr Aspect kSystem0Aspect[8] = {
    {k4by3, 0}, {k16by9, 1}, {k16by9, 0}, {k4by3, 0}, {k4by3, 0}, {k4by3, 0}, {k4by3, 0}, {k4by3, 0},
};

void DecodeSourceControl(const uint8_t* pack, ZeDVVideoParams* params) {
    const uint8_t pc1 = pack[1];
    const uint8_t pc2 = pack[2];
    const uint8_t pc3 = pack[3];
    const uint32_t d = pc2 & 7u;
    const uint32_t s = pc3 & 3u;
    const Aspect aspect = s == 1 ? kSystem1Aspect[d] : s == 0 ? kSystem0Aspect[d] : Aspect{k4by3, 0};
    params->aspectRatio = aspect.ratio;
    params->displayCode = aspect.displayCode;
    const uint32_t compression = (pc1 >> 4) & 3u;
    params->compressionCode = compression >= 2 ? 2 : compression;
    params->recordingStartCode = (pc2 & 0x80) == 0 ? 1 : 0;
    if ((pc3 & 0x10) == 0) {
        params->interlaceCode = 0;
    } else {
        params->interlaceCode = (pc3 & 0x40) != 0 ? 2 : 1;
    }
}

}  // namespace

bool DecodeVideoParamsFromFrame(const uint8_t* frame, size_t frameSize, ZeDVVideoParams* params) {
    *params = ZeDVVideoParams{};
    if (frame == nullptr) return false;
    BuildRecordingDateTimeText(frame, frameSize, params->recordingDateTime);
    const uint8_t* pack = nullptr;
    if (GetVauxPackAtSlot(frame, frameSize, kVauxSourceSlot, &pack) && pack[0] == kPackVauxSource) {
        params->sixtyFields = (pack[3] & 0x20) == 0 ? 1 : 0;
    }
    if (GetVauxPackAtSlot(frame, frameSize, kVauxSourceControlSlot, &pack) && pack[0] == kPackVauxSourceControl) {
        DecodeSourceControl(pack, params);
    }
    return true;
}

bool DecodeAudioParamsFromFrame(const uint8_t* frame, size_t frameSize, ZeDVAudioParams* params) {
    *params = ZeDVAudioParams{};
    if (frame == nullptr) return false;
    const uint8_t* pack = nullptr;
    if (!GetAauxPackOfBlock(frame, frameSize, kAauxSourceBlock, &pack) || pack[0] != kPackAauxSource) return true;
    const uint8_t pc2 = pack[2];
    const uint8_t pc4 = pack[4];
    if ((pc2 & 0x80) != 0) {
        // mode and channel flags stay 0
    } else if ((pc2 & 0x20) != 0) {
        params->audioModeCode = 2;
        if ((pc2 & 0x10) != 0) {
            params->firstChannel = 1;
            params->secondChannel = 1;
        }
    } else {
        params->audioModeCode = 1;
        if ((pc2 & 0x10) == 0) {
            if ((pc2 & 0x01) != 0) {
                params->secondChannel = 1;
            } else {
                params->firstChannel = 1;
            }
        }
    }
    params->sampleRate = (pc4 & 0x08) != 0 ? 44100 : (pc4 & 0x10) != 0 ? 32000 : 48000;
    params->bitsPerSample = (pc4 & 0x01) != 0 ? 16 : ((pc4 & 2u) | 8u) * 2;
    return true;
}

}  // namespace ZeDV
