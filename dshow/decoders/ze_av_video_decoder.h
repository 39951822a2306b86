// A libavcodec video decoder opened from the format block of an AVI stream: the BITMAPINFOHEADER
// and the bytes that follow it (codec set-up data, or the palette of a palettised format). Packets go
// in with their time stamps; each call hands every picture it completes to a callback, zero or
// several per packet, in display order. A plain C++ class: the transform filter drives it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "dshow/decoders/ze_av_handles.h"
#include "platform/win32.h"

namespace zedec {

// Receives one decoded picture; its time stamp is frame.pts (the time of the packet that carried
// the picture, or libavcodec's best guess when that packet had none) and its duration
// frame.pkt_duration. Returning false stops the call that is handing out pictures.
using PictureSink = std::function<bool(const AVFrame& frame)>;

class AvVideoDecoder {
public:
    AvVideoDecoder();
    AvVideoDecoder(const AvVideoDecoder&) = delete;
    AvVideoDecoder& operator=(const AvVideoDecoder&) = delete;

    // The largest lowres level the codec supports (0 when it has none or is not present).
    static int MaxLowres(AVCodecID codec);

    // Opens the decoder; lowres is clamped to what the codec supports. On failure returns false and
    // says why in *whyNot.
    bool Open(AVCodecID codec, const BITMAPINFOHEADER& header, const uint8_t* extra, size_t extraSize, int lowres,
              std::string* whyNot);
    void Close();
    bool IsOpen() const { return m_context != nullptr; }
    AVCodecID Codec() const { return m_codec; }
    int Lowres() const;

    // Decodes one packet. pts and duration may be AV_NOPTS_VALUE / 0 when unknown. Returns 0, or a
    // negative AVERROR when libavcodec refused the packet (the pictures it did complete are still
    // handed out), or 1 when the sink asked to stop.
    int Decode(const uint8_t* data, size_t size, int64_t pts, int64_t duration, bool keyFrame,
               const PictureSink& sink);

    // End of stream: hands out every picture the decoder still holds back, then leaves the decoder
    // ready for a new stream. Same results as Decode.
    int Drain(const PictureSink& sink);

    // Discards what the decoder holds (a seek or a new segment). Codecs whose pictures after a
    // jump reference frames that were never decoded then drop pictures until a key frame decodes.
    void Flush();

private:
    int ReceiveAll(const PictureSink& sink);
    void AttachPalette(AVPacket& packet);

    AVCodecID m_codec = AV_CODEC_ID_NONE;
    CodecContextPtr m_context;
    FramePtr m_frame;
    PacketPtr m_packet;
    std::vector<uint32_t> m_palette;  // from the bytes after the header, sent with the first packet
    bool m_paletteSent = false;
    bool m_waitForKey = false;
};

}  // namespace zedec
