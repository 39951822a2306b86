// The table of system decoders: one row per decoder with its class identifier, friendly name,
// merit, libavcodec codec and the FOURCCs it takes as input subtypes. The same transform filter
// serves every row; the rows decide what it accepts, how the mapper finds it and what it is called.
//
// Named rows stand for the decoders a Windows installation has: the DV Video Decoder, the MJPEG
// Decompressor and the two MPEG-4 part 2 decoders registered under the FOURCC GUIDs of 'divx' and
// 'xvid'. Every other FOURCC that libavformat's RIFF table maps to a codec that libavcodec decodes
// gets a generic row per codec. Uncompressed FOURCCs (the rawvideo codec: BI_RGB, YUY2, UYVY, ...,
// and the packed Y41P and AYUV) get none: they are what decoders put out, and a "decoder" from
// YUY2 to YUY2 would only give intelligent connect a loop to walk into.
#pragma once

#include <string>
#include <vector>

extern "C" {
#include <libavcodec/codec_id.h>
}

#include "platform/win32_dshow.h"

namespace zedec {

struct DecoderRow {
    CLSID clsid;
    std::string friendlyName;   // UTF-8
    DWORD merit;
    AVCodecID codec;
    std::vector<DWORD> fourccs;  // input subtypes are their FOURCC GUIDs
    bool dv = false;             // the DV Video Decoder: IIPDVDec, FORMAT_DvInfo input, DV picture sizes
};

// Built on first use; the rows stay valid for the rest of the process.
const std::vector<DecoderRow>& DecoderTable();
const DecoderRow* FindDecoderRow(REFCLSID clsid);

// The class identifier of the generic row of a codec: a fixed base GUID whose first field is the
// codec id.
CLSID GenericDecoderClsid(AVCodecID codec);

// The codec libavformat's RIFF table names for a FOURCC (an exact match first, then one that
// ignores letter case, as libavformat does); AV_CODEC_ID_NONE when it names none.
AVCodecID CodecOfFourcc(DWORD fourcc);

// Whether a media subtype is the FOURCC GUID of some FOURCC, and which.
bool FourccOfSubtype(const GUID& subtype, DWORD* fourcc);

}  // namespace zedec
