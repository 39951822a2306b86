#include "dshow/decoders/ze_av_video_decoder.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cstring>

namespace zedec {
namespace {

// Codecs whose first pictures after a jump would be built on references that were never decoded:
// after a flush their output is dropped until a key frame has been decoded.
bool DropsUntilKeyAfterFlush(AVCodecID codec)
{
    switch (codec) {
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
    case AV_CODEC_ID_MPEG4:
    case AV_CODEC_ID_VC1:
    case AV_CODEC_ID_WMV3:
    case AV_CODEC_ID_VP3:
    case AV_CODEC_ID_THEORA:
    case AV_CODEC_ID_RV30:
    case AV_CODEC_ID_RV40:
        return true;
    default:
        return false;
    }
}

std::string ErrorText(int error)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

}  // namespace

AvVideoDecoder::AvVideoDecoder() : m_frame(av_frame_alloc()), m_packet(av_packet_alloc()) {}

int AvVideoDecoder::MaxLowres(AVCodecID codec)
{
    const AVCodec* decoder = avcodec_find_decoder(codec);
    return decoder ? decoder->max_lowres : 0;
}

int AvVideoDecoder::Lowres() const { return m_context ? m_context->lowres : 0; }

bool AvVideoDecoder::Open(AVCodecID codec, const BITMAPINFOHEADER& header, const uint8_t* extra, size_t extraSize,
                          int lowres, std::string* whyNot)
{
    Close();
    auto fail = [whyNot](const std::string& why) {
        if (whyNot)
            *whyNot = why;
        return false;
    };
    if (!m_frame || !m_packet)
        return fail("out of memory");
    const AVCodec* decoder = avcodec_find_decoder(codec);
    if (!decoder)
        return fail(std::string("libavcodec has no decoder for ") + avcodec_get_name(codec));
    CodecContextPtr context(avcodec_alloc_context3(decoder));
    if (!context)
        return fail("out of memory");
    context->codec_tag = header.biCompression;
    context->width = header.biWidth;
    context->height = header.biHeight < 0 ? -header.biHeight : header.biHeight;
    context->bits_per_coded_sample = header.biBitCount;
    context->lowres = std::clamp(lowres, 0, static_cast<int>(decoder->max_lowres));
    context->pkt_timebase = AVRational{1, 10000000};  // REFERENCE_TIME units pass through unchanged
    // The filter decodes on the delivering thread, one picture out per picture in as far as the
    // codec allows; frame threads would add a picture of delay per thread.
    context->thread_count = 1;
    if (extra && extraSize > 0) {
        context->extradata = static_cast<uint8_t*>(av_mallocz(extraSize + AV_INPUT_BUFFER_PADDING_SIZE));
        if (!context->extradata)
            return fail("out of memory");
        std::memcpy(context->extradata, extra, extraSize);
        context->extradata_size = static_cast<int>(extraSize);
    }
    const int opened = avcodec_open2(context.get(), decoder, nullptr);
    if (opened < 0)
        return fail(std::string("cannot open the ") + decoder->name + " decoder: " + ErrorText(opened));

    // A palettised bitmap carries its colour table (RGBQUAD: blue, green, red, reserved) after the
    // header; libavcodec takes it as packet side data in 0xAARRGGBB words.
    m_palette.clear();
    if (header.biBitCount > 0 && header.biBitCount <= 8 && extra) {
        const size_t entries = std::min<size_t>(extraSize / 4, size_t(1) << header.biBitCount);
        for (size_t i = 0; i < entries; ++i) {
            const uint8_t* q = extra + 4 * i;
            m_palette.push_back(0xFF000000u | uint32_t(q[2]) << 16 | uint32_t(q[1]) << 8 | q[0]);
        }
    }
    m_paletteSent = false;
    m_waitForKey = false;
    m_codec = codec;
    m_context = std::move(context);
    return true;
}

void AvVideoDecoder::Close()
{
    m_context.reset();
    m_codec = AV_CODEC_ID_NONE;
}

void AvVideoDecoder::AttachPalette(AVPacket& packet)
{
    if (m_paletteSent || m_palette.empty())
        return;
    const size_t bytes = AVPALETTE_SIZE;
    uint8_t* side = av_packet_new_side_data(&packet, AV_PKT_DATA_PALETTE, bytes);
    if (!side)
        return;
    std::memset(side, 0, bytes);
    std::memcpy(side, m_palette.data(), m_palette.size() * sizeof(uint32_t));
    m_paletteSent = true;
}

int AvVideoDecoder::Decode(const uint8_t* data, size_t size, int64_t pts, int64_t duration, bool keyFrame,
                           const PictureSink& sink)
{
    if (!m_context)
        return AVERROR(EINVAL);
    if (size == 0)
        return 0;  // an empty chunk (a dropped frame) carries no picture
    av_packet_unref(m_packet.get());
    // libavcodec reads up to AV_INPUT_BUFFER_PADDING_SIZE bytes past the data, so the packet gets
    // its own padded copy.
    if (av_new_packet(m_packet.get(), static_cast<int>(size)) < 0)
        return AVERROR(ENOMEM);
    std::memcpy(m_packet->data, data, size);
    m_packet->pts = pts;
    m_packet->dts = AV_NOPTS_VALUE;
    m_packet->duration = duration;
    if (keyFrame)
        m_packet->flags |= AV_PKT_FLAG_KEY;
    AttachPalette(*m_packet);

    int sent = avcodec_send_packet(m_context.get(), m_packet.get());
    if (sent == AVERROR(EAGAIN)) {
        // Pictures are still waiting to be taken: hand them out, then the packet fits.
        const int received = ReceiveAll(sink);
        if (received != 0)
            return received;
        sent = avcodec_send_packet(m_context.get(), m_packet.get());
    }
    av_packet_unref(m_packet.get());
    const int received = ReceiveAll(sink);
    if (received != 0)
        return received;
    return sent < 0 ? sent : 0;
}

int AvVideoDecoder::Drain(const PictureSink& sink)
{
    if (!m_context)
        return AVERROR(EINVAL);
    const int sent = avcodec_send_packet(m_context.get(), nullptr);
    const int received = sent < 0 && sent != AVERROR_EOF ? sent : ReceiveAll(sink);
    // After the last picture the decoder is in its end state; a flush makes it take packets again.
    avcodec_flush_buffers(m_context.get());
    return received;
}

void AvVideoDecoder::Flush()
{
    if (!m_context)
        return;
    avcodec_flush_buffers(m_context.get());
    m_waitForKey = DropsUntilKeyAfterFlush(m_codec);
}

int AvVideoDecoder::ReceiveAll(const PictureSink& sink)
{
    for (;;) {
        const int got = avcodec_receive_frame(m_context.get(), m_frame.get());
        if (got == AVERROR(EAGAIN) || got == AVERROR_EOF)
            return 0;
        if (got < 0)
            return got;
        if (m_waitForKey && !m_frame->key_frame) {
            av_frame_unref(m_frame.get());
            continue;
        }
        m_waitForKey = false;
        if (m_frame->pts == AV_NOPTS_VALUE)
            m_frame->pts = m_frame->best_effort_timestamp;
        const bool more = sink(*m_frame);
        av_frame_unref(m_frame.get());
        if (!more)
            return 1;
    }
}

}  // namespace zedec
