// The decoder filter while streaming: pictures held back by the codec and drained at the end,
// discarded on a flush or a new segment, and the DV resolution that may change only while stopped.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

extern "C" {
#include <libavcodec/codec_id.h>
}

#include "dshow/decoders/ze_decoder_table.h"
#include "tests/dshow/decoders/decoder_chain.h"

namespace {

using dectest::Clip;

struct StreamingTest : public ::testing::Test {
    const Clip* Load(const char* name)
    {
        std::string whyNot;
        const Clip* clip = dectest::LoadClip(name, &whyNot);
        if (!clip)
            ADD_FAILURE() << whyNot;
        return clip;
    }
    std::unique_ptr<dectest::DecoderChain> Chain(const Clip& clip, REFCLSID decoder, DWORD fourcc)
    {
        size_t largest = 0;
        for (const auto& p : clip.packets)
            largest = std::max(largest, p.bytes.size());
        auto chain = std::make_unique<dectest::DecoderChain>(decoder, dectest::ClipInputType(clip, fourcc),
                                                             LONG(largest), MEDIASUBTYPE_RGB24);
        EXPECT_EQ(chain->Connect(), S_OK);
        return chain;
    }
};

const CLSID kH264Decoder = zedec::GenericDecoderClsid(AV_CODEC_ID_H264);
const DWORD kH264 = ZeFourcc('H', '2', '6', '4');

TEST_F(StreamingTest, BFramesComeOutFromTheThirdPacketAndTheRestAtTheEnd)
{
    const Clip* clip = Load("h264_s16_mono");
    ASSERT_TRUE(clip);
    auto chain = Chain(*clip, kH264Decoder, kH264);
    ASSERT_EQ(chain->Run(), S_OK);
    std::vector<size_t> counts;
    for (const auto& packet : clip->packets) {
        ASSERT_EQ(chain->Push(packet), S_OK);
        counts.push_back(chain->Renderer().Count());
    }
    EXPECT_EQ(counts[0], 0u);
    EXPECT_EQ(counts[1], 0u);
    EXPECT_EQ(counts[2], 1u);
    EXPECT_EQ(counts.back(), clip->packets.size() - 2);
    chain->Source().DeliverEndOfStream();
    EXPECT_EQ(chain->Renderer().Count(), clip->packets.size());
    EXPECT_EQ(chain->Renderer().EndOfStreamCount(), 1);
}

TEST_F(StreamingTest, FlushAndNewSegmentDiscardHeldPictures)
{
    const Clip* clip = Load("h264_s16_mono");
    ASSERT_TRUE(clip);
    // The clip's second key frame: what a seek would push after discarding.
    size_t key = 1;
    while (key < clip->packets.size() && !clip->packets[key].key)
        ++key;
    ASSERT_LT(key, clip->packets.size());

    for (int how = 0; how < 2; ++how) {
        SCOPED_TRACE(how == 0 ? "flush" : "new segment");
        auto chain = Chain(*clip, kH264Decoder, kH264);
        ASSERT_EQ(chain->Run(), S_OK);
        for (size_t i = 0; i < 5; ++i)
            ASSERT_EQ(chain->Push(clip->packets[i]), S_OK);
        const size_t before = chain->Renderer().Count();
        ASSERT_EQ(before, 3u);  // two pictures held
        if (how == 0) {
            chain->Source().DeliverBeginFlush();
            chain->Source().DeliverEndFlush();
        } else {
            chain->Source().DeliverNewSegment(0, MAX_TIME, 1.0);
        }
        chain->Renderer().Clear();
        // From the key frame on, every picture is the stream's own; nothing from before the jump.
        for (size_t i = key; i < clip->packets.size(); ++i)
            ASSERT_EQ(chain->Push(clip->packets[i]), S_OK);
        chain->Source().DeliverEndOfStream();
        const std::vector<zetest::RenderedSample> samples = chain->Renderer().Samples();
        ASSERT_EQ(samples.size(), clip->packets.size() - key);
        EXPECT_TRUE(samples.front().discontinuity);
        for (const auto& s : samples)
            EXPECT_GE(s.start, clip->packets[key].start);
    }
}

TEST_F(StreamingTest, Mpeg4AfterAFlushWaitsForAKeyFrame)
{
    const Clip* clip = Load("fmp4_video_only");
    ASSERT_TRUE(clip);
    auto chain = Chain(*clip, ZeFourccSubtype(ZeFourcc('x', 'v', 'i', 'd')), ZeFourcc('F', 'M', 'P', '4'));
    ASSERT_EQ(chain->Run(), S_OK);
    chain->Source().DeliverBeginFlush();
    chain->Source().DeliverEndFlush();
    // Resume in the middle of a group of pictures: nothing until the next key frame.
    size_t next = 2;
    while (!clip->packets[next].key)
        ++next;
    for (size_t i = 2; i < next; ++i)
        ASSERT_EQ(chain->Push(clip->packets[i]), S_OK);
    EXPECT_EQ(chain->Renderer().Count(), 0u);
    for (size_t i = next; i < clip->packets.size(); ++i)
        ASSERT_EQ(chain->Push(clip->packets[i]), S_OK);
    chain->Source().DeliverEndOfStream();
    const std::vector<zetest::RenderedSample> samples = chain->Renderer().Samples();
    ASSERT_FALSE(samples.empty());
    EXPECT_EQ(samples.front().start, clip->packets[next].start);
}

TEST_F(StreamingTest, DvResolutionChangesOnlyWhileStopped)
{
    const Clip* clip = Load("dv_pal");
    ASSERT_TRUE(clip);
    size_t largest = clip->packets[0].bytes.size();
    dectest::DecoderChain chain(CLSID_DVVideoCodec, dectest::ClipInputType(*clip, ZeFourcc('d', 'v', 's', 'd')),
                                LONG(largest), MEDIASUBTYPE_RGB24);
    IIPDVDec* dv = nullptr;
    ASSERT_EQ(chain.Decoder()->QueryInterface(IID_IIPDVDec, reinterpret_cast<void**>(&dv)), S_OK);
    int value = 0;
    EXPECT_EQ(dv->get_IPDisplay(&value), S_OK);
    EXPECT_EQ(value, DVRESOLUTION_FULL);
    EXPECT_EQ(dv->get_IPDisplay(nullptr), E_POINTER);
    // Divisors are the same resolutions; other values are refused and change nothing.
    const struct {
        int put;
        HRESULT result;
        int got;
    } steps[] = {{4, S_OK, DVRESOLUTION_QUARTER}, {3, E_INVALIDARG, DVRESOLUTION_QUARTER},
                 {1, S_OK, DVRESOLUTION_FULL},    {DVRESOLUTION_DC, S_OK, DVRESOLUTION_DC},
                 {1004, E_INVALIDARG, DVRESOLUTION_DC}, {2, S_OK, DVRESOLUTION_HALF}};
    for (const auto& step : steps) {
        EXPECT_EQ(dv->put_IPDisplay(step.put), step.result) << step.put;
        EXPECT_EQ(dv->get_IPDisplay(&value), S_OK);
        EXPECT_EQ(value, step.got) << step.put;
    }
    ASSERT_EQ(chain.Connect(), S_OK);
    ASSERT_EQ(chain.Run(), S_OK);
    EXPECT_EQ(dv->put_IPDisplay(DVRESOLUTION_FULL), VFW_E_NOT_STOPPED);
    ASSERT_EQ(chain.Push(clip->packets[0]), S_OK);
    EXPECT_EQ(dv->put_IPDisplay(DVRESOLUTION_QUARTER), VFW_E_NOT_STOPPED);
    EXPECT_EQ(dv->get_IPDisplay(&value), S_OK);
    EXPECT_EQ(value, DVRESOLUTION_HALF);
    const std::vector<zetest::RenderedSample> samples = chain.Renderer().Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].bytes.size(), 360u * 3 * 288);
    dv->Release();
}

// An RGB24 type for 720x576 pictures as a renderer might propose it: rows of `rowPixels`, the
// picture in rcTarget, bottom-up or top-down by the sign of the height.
CMediaType ProposedRgb24(int rowPixels, int width, int height)
{
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&MEDIASUBTYPE_RGB24);
    type.SetFormatType(&FORMAT_VideoInfo);
    auto* vih = reinterpret_cast<VIDEOINFOHEADER*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    vih->rcTarget = RECT{0, 0, width, std::abs(height)};
    vih->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    vih->bmiHeader.biWidth = rowPixels;
    vih->bmiHeader.biHeight = height;
    vih->bmiHeader.biPlanes = 1;
    vih->bmiHeader.biBitCount = 24;
    vih->bmiHeader.biSizeImage = DWORD(rowPixels * 3 * std::abs(height));
    type.SetSampleSize(vih->bmiHeader.biSizeImage);
    return type;
}

TEST_F(StreamingTest, TakesAProposedStrideAndRowOrderButNotAnotherSize)
{
    const Clip* clip = Load("dv_pal");
    ASSERT_TRUE(clip);
    const dectest::Pictures truth = dectest::FfmpegPictures("dv_pal", "bgr24", 720, 576);
    ASSERT_FALSE(truth.pictures.empty());
    const struct {
        int rowPixels, width, height;
        bool accepted;
    } proposals[] = {{768, 720, 576, true}, {720, 720, -576, true}, {360, 360, 288, false}, {704, 704, 576, false}};
    for (const auto& p : proposals) {
        SCOPED_TRACE(std::to_string(p.rowPixels) + " " + std::to_string(p.height));
        dectest::DecoderChain chain(CLSID_DVVideoCodec, dectest::ClipInputType(*clip, ZeFourcc('d', 'v', 's', 'd')),
                                    LONG(clip->packets[0].bytes.size()), GUID_NULL);
        const CMediaType proposed = ProposedRgb24(p.rowPixels, p.width, p.height);
        const HRESULT hr = chain.Connect(&proposed);
        if (!p.accepted) {
            EXPECT_TRUE(FAILED(hr));
            continue;
        }
        ASSERT_EQ(hr, S_OK);
        ASSERT_EQ(chain.Run(), S_OK);
        ASSERT_EQ(chain.Push(clip->packets[0]), S_OK);
        const std::vector<zetest::RenderedSample> samples = chain.Renderer().Samples();
        ASSERT_EQ(samples.size(), 1u);
        const size_t stride = size_t(p.rowPixels) * 3;
        ASSERT_EQ(samples[0].bytes.size(), stride * 576);
        const std::vector<uint8_t> rows =
            dectest::TopDownRows(samples[0].bytes.data(), stride, 720 * 3, 576, p.height > 0);
        EXPECT_TRUE(rows == truth.pictures[0]);
    }
}

// The DV info format block of a clip, its VAUX source pack (id 0x60) read from the first frame's
// VAUX DIF blocks (section type 2, fifteen 5-byte packs after a 3-byte block id).
CMediaType DvInfoType(const Clip& clip)
{
    DVINFO info{};
    const std::vector<uint8_t>& frame = clip.packets[0].bytes;
    for (size_t block = 0; block + 80 <= frame.size() && !info.dwDVVAuxSrc; block += 80) {
        if ((frame[block] >> 5) != 2)
            continue;
        for (size_t pack = block + 3; pack + 5 <= block + 80; pack += 5)
            if (frame[pack] == 0x60) {
                info.dwDVVAuxSrc = DWORD(frame[pack + 1]) | DWORD(frame[pack + 2]) << 8 |
                                   DWORD(frame[pack + 3]) << 16 | DWORD(frame[pack + 4]) << 24;
                break;
            }
    }
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&MEDIASUBTYPE_dvsd);
    type.SetFormatType(&FORMAT_DvInfo);
    type.SetFormat(reinterpret_cast<const BYTE*>(&info), sizeof info);
    return type;
}

TEST_F(StreamingTest, DvInfoInputGivesThePalOrNtscPicture)
{
    for (const auto& [name, height] : {std::pair{"dv_pal", 576}, {"dv_ntsc", 480}}) {
        SCOPED_TRACE(name);
        const Clip* clip = Load(name);
        ASSERT_TRUE(clip);
        dectest::DecoderChain chain(CLSID_DVVideoCodec, DvInfoType(*clip), LONG(clip->packets[0].bytes.size()),
                                    MEDIASUBTYPE_RGB24);
        ASSERT_EQ(chain.Connect(), S_OK);
        ASSERT_EQ(chain.Run(), S_OK);
        ASSERT_EQ(chain.Push(clip->packets[0]), S_OK);
        const std::vector<zetest::RenderedSample> samples = chain.Renderer().Samples();
        ASSERT_EQ(samples.size(), 1u);
        const dectest::Pictures truth = dectest::FfmpegPictures(name, "bgr24", 720, height);
        ASSERT_FALSE(truth.pictures.empty());
        EXPECT_TRUE(dectest::PictureRows(samples[0]) == truth.pictures[0]);
    }
}

TEST_F(StreamingTest, ADamagedPacketGivesNoPictureAndDoesNotStopTheStream)
{
    const Clip* clip = Load("mjpeg_s16_stereo");
    ASSERT_TRUE(clip);
    auto chain = Chain(*clip, CLSID_MjpegDec, ZeFourcc('M', 'J', 'P', 'G'));
    ASSERT_EQ(chain->Run(), S_OK);
    dectest::ClipPacket damaged = clip->packets[0];
    damaged.bytes.assign(damaged.bytes.size(), 0x5A);
    EXPECT_EQ(chain->Push(damaged), S_OK);
    EXPECT_EQ(chain->Renderer().Count(), 0u);
    EXPECT_EQ(chain->Push(clip->packets[1]), S_OK);
    EXPECT_EQ(chain->Renderer().Count(), 1u);
}

TEST_F(StreamingTest, OnlyTheDvDecoderHasDvResolutions)
{
    dectest::MakeDecodersCreatable();
    for (const CLSID& clsid : {CLSID_MjpegDec, kH264Decoder, ZeFourccSubtype(ZeFourcc('d', 'i', 'v', 'x'))}) {
        IBaseFilter* filter = nullptr;
        ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                   reinterpret_cast<void**>(&filter)),
                  S_OK);
        IIPDVDec* dv = reinterpret_cast<IIPDVDec*>(1);
        EXPECT_EQ(filter->QueryInterface(IID_IIPDVDec, reinterpret_cast<void**>(&dv)), E_NOINTERFACE);
        EXPECT_EQ(dv, nullptr);
        filter->Release();
    }
}

}  // namespace
