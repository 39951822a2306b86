// Pack locations and search, recording date text, video and audio parameters, 12-bit expansion.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "dv/ze_dv_audio_frame.h"
#include "dv/ze_dv_pack_location.h"
#include "dv/ze_dv_params_decode.h"
#include "dv/ze_dv_rec_datetime.h"
#include "tests/dv/dv_test_frames.h"

namespace {

using dvtest::MakeFrame;

TEST(DVPackLocation, FixedSlotsAndAudioPacksSitWhereTheFrameLayoutPutsThem) {
    const dvtest::Frame f = MakeFrame(true);
    const uint8_t* base = f.bytes.data();
    const uint8_t* pack = nullptr;
    const struct {
        uint32_t slot;
        size_t offset;
    } slots[] = {{0, 243}, {14, 313}, {15, 323}, {39, 448}, {40, 453}, {44, 473}};
    for (const auto& s : slots) {
        ASSERT_TRUE(ZeDV::GetVauxPackAtSlot(base, f.bytes.size(), s.slot, &pack)) << s.slot;
        EXPECT_EQ(static_cast<size_t>(pack - base), s.offset) << s.slot;
    }
    EXPECT_FALSE(ZeDV::GetVauxPackAtSlot(base, f.bytes.size(), 45, &pack));
    EXPECT_FALSE(ZeDV::GetVauxPackAtSlot(base, f.bytes.size(), 0, nullptr));

    ASSERT_TRUE(ZeDV::GetAauxPackOfBlock(base, f.bytes.size(), 3, &pack));
    EXPECT_EQ(pack - base, 4323);
    ASSERT_TRUE(ZeDV::GetAauxPackOfBlock(base, f.bytes.size(), 0, &pack));
    EXPECT_EQ(pack - base, 483);
    EXPECT_FALSE(ZeDV::GetAauxPackOfBlock(base, f.bytes.size(), 3, nullptr));
    // A short frame: no pointer past its end.
    EXPECT_FALSE(ZeDV::GetAauxPackOfBlock(base, 4327, 3, &pack));
    EXPECT_TRUE(ZeDV::GetAauxPackOfBlock(base, 4328, 3, &pack));
    EXPECT_FALSE(ZeDV::GetVauxPackAtSlot(base, 457, 40, &pack));
    EXPECT_TRUE(ZeDV::GetVauxPackAtSlot(base, 458, 40, &pack));
}

TEST(DVPackSearch, FirstMatchWinsAndVideoAndAudioBlocksAreNotSkipped) {
    dvtest::Frame f = MakeFrame(true);
    CZeDVDataPack pack;
    EXPECT_FALSE(ZeDV::FindPack(f.bytes.data(), f.bytes.size(), 0x70, &pack));

    // Step 1000 of the search lands on byte 5573, inside a video block.
    f.Put(5573, {0x70, 1, 2, 3, 4});
    ASSERT_TRUE(ZeDV::FindPack(f.bytes.data(), f.bytes.size(), 0x70, &pack));
    EXPECT_EQ(pack.GetPC1(), 1);
    EXPECT_EQ(pack.GetPC4(), 4);

    // An earlier slot wins; a byte between two steps is never looked at.
    f.PutVaux(20, {0x70, 9, 9, 9, 9});
    f.Put(250, {0x70, 7, 7, 7, 7});
    ASSERT_TRUE(ZeDV::FindPack(f.bytes.data(), f.bytes.size(), 0x70, &pack));
    EXPECT_EQ(pack.GetPC1(), 9);

    // The search ends at the frame's end: a pack that would cross it is not found.
    dvtest::Frame g = MakeFrame(true);
    g.Put(5573, {0x71, 1, 2, 3, 4});
    EXPECT_FALSE(ZeDV::FindPack(g.bytes.data(), 5577, 0x71, &pack));
    EXPECT_TRUE(ZeDV::FindPack(g.bytes.data(), 5578, 0x71, &pack));
    // The last step (1496) still looks, at byte 8218; nothing beyond.
    g.Put(8218, {0x72, 5, 5, 5, 5});
    EXPECT_TRUE(ZeDV::FindPack(g.bytes.data(), g.bytes.size(), 0x72, &pack));
    g.Put(8218, {0, 0, 0, 0, 0});
    g.Put(8223, {0x72, 5, 5, 5, 5});
    EXPECT_FALSE(ZeDV::FindPack(g.bytes.data(), g.bytes.size(), 0x72, &pack));
}

std::string DateText(uint8_t day, uint8_t month, uint8_t year, uint8_t sec, uint8_t min, uint8_t hour) {
    dvtest::Frame f = MakeFrame(true);
    f.PutVaux(41, {0x62, 0xFF, static_cast<uint8_t>(0xC0 | day), month, year});
    f.PutVaux(42, {0x63, 0xFF, sec, min, hour});
    char text[ZeDV::kDateTimeTextSize];
    std::memset(text, 'x', sizeof(text));
    EXPECT_TRUE(ZeDV::BuildRecordingDateTimeText(f.bytes.data(), f.bytes.size(), text));
    return text;
}

TEST(DVRecordingDate, TextIsPlainDecimalWithTheCenturyCutAt25) {
    EXPECT_EQ(DateText(0x31, 0x12, 0x24, 0x59, 0x59, 0x23), "31.12.2024 23:59:59");
    EXPECT_EQ(DateText(0x31, 0x12, 0x99, 0x59, 0x59, 0x23), "31.12.1999 23:59:59");
    EXPECT_EQ(DateText(0x05, 0x01, 0x25, 0x00, 0x07, 0x00), "5.1.1925 0:7:0");
    // Flag bits above the BCD fields are masked off.
    EXPECT_EQ(DateText(0x01, 0xE9, 0x00, 0x80 | 0x08, 0x80 | 0x30, 0xC0 | 0x09), "1.9.2000 9:30:8");

    // Without REC TIME the text stays as it was.
    dvtest::Frame f = MakeFrame(true);
    f.PutVaux(41, {0x62, 0xFF, 0xC1, 0x01, 0x24});
    char text[ZeDV::kDateTimeTextSize] = "untouched";
    EXPECT_FALSE(ZeDV::BuildRecordingDateTimeText(f.bytes.data(), f.bytes.size(), text));
    EXPECT_STREQ(text, "untouched");
}

ZeDVVideoParams VideoParams(uint8_t pc1, uint8_t pc2, uint8_t pc3) {
    dvtest::Frame f = MakeFrame(true);
    f.PutVaux(40, {0x61, pc1, pc2, pc3, 0xFF});
    ZeDVVideoParams p;
    EXPECT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), f.bytes.size(), &p));
    return p;
}

TEST(DVVideoParams, SourceControlGivesAspectDisplayInterlaceCompressionAndStart) {
    // Every display mode of systems 1 and 0, and the systems that ignore the mode.
    const struct {
        uint8_t s, d;
        double aspect;
        uint32_t display;
    } rows[] = {
        {1, 0, 4.0 / 3, 0},  {1, 1, 14.0 / 9, 1}, {1, 2, 14.0 / 9, 2}, {1, 3, 16.0 / 9, 1}, {1, 4, 16.0 / 9, 2},
        {1, 5, 16.0 / 9, 1}, {1, 6, 14.0 / 9, 0}, {1, 7, 16.0 / 9, 0}, {0, 0, 4.0 / 3, 0},  {0, 1, 16.0 / 9, 1},
        {0, 2, 16.0 / 9, 0}, {0, 3, 4.0 / 3, 0},  {0, 4, 4.0 / 3, 0},  {0, 5, 4.0 / 3, 0},  {0, 6, 4.0 / 3, 0},
        {0, 7, 4.0 / 3, 0},  {2, 3, 4.0 / 3, 0},  {3, 2, 4.0 / 3, 0},
    };
    for (const auto& r : rows) {
        const ZeDVVideoParams p = VideoParams(0x00, static_cast<uint8_t>(0x38 | r.d), static_cast<uint8_t>(0xC0 | r.s));
        EXPECT_DOUBLE_EQ(p.aspectRatio, r.aspect) << int(r.s) << "/" << int(r.d);
        EXPECT_EQ(p.displayCode, r.display) << int(r.s) << "/" << int(r.d);
    }
    // Compression from PC1, recording start from PC2, interlace from PC3.
    const struct {
        uint8_t pc1, pc2, pc3;
        uint32_t compression, start, interlace;
    } codes[] = {{0x00, 0x00, 0x40, 0, 1, 0}, {0x10, 0x80, 0x10, 1, 0, 1}, {0x20, 0x00, 0x50, 2, 1, 2},
                 {0xF0, 0x80, 0x10, 2, 0, 1}};
    for (const auto& c : codes) {
        const ZeDVVideoParams p = VideoParams(c.pc1, c.pc2, c.pc3);
        EXPECT_EQ((std::vector<uint32_t>{c.compression, c.start, c.interlace}),
                  (std::vector<uint32_t>{p.compressionCode, p.recordingStartCode, p.interlaceCode}))
            << std::hex << int(c.pc1) << " " << int(c.pc2) << " " << int(c.pc3);
    }
}

TEST(DVVideoParams, SystemFlagDateAndMissingPacks) {
    dvtest::Frame f = MakeFrame(true);
    ZeDVVideoParams p;
    p.displayCode = 7;
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), f.bytes.size(), &p));
    EXPECT_EQ(p.displayCode, 0u);  // zeroed, no pack to fill it
    EXPECT_EQ(p.aspectRatio, 0.0);
    EXPECT_STREQ(p.recordingDateTime, "");

    f.PutVaux(39, {0x60, 0xFF, 0xFF, 0xE0, 0xFF});  // 50-field bit set
    f.PutVaux(41, {0x62, 0xFF, 0xC1, 0x02, 0x03});
    f.PutVaux(42, {0x63, 0xFF, 0x04, 0x05, 0x06});
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), f.bytes.size(), &p));
    EXPECT_EQ(p.sixtyFields, 0u);
    EXPECT_STREQ(p.recordingDateTime, "1.2.2003 6:5:4");
    f.PutVaux(39, {0x60, 0xFF, 0xFF, 0xC0, 0xFF});
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), f.bytes.size(), &p));
    EXPECT_EQ(p.sixtyFields, 1u);
    // A pack of another type in slot 39 is no VAUX source.
    f.PutVaux(39, {0x61, 0xFF, 0xFF, 0xC0, 0xFF});
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), f.bytes.size(), &p));
    EXPECT_EQ(p.sixtyFields, 0u);

    // A frame cut short still gives every pack that lies wholly inside it; one that crosses the
    // end counts as missing.
    f.PutVaux(39, {0x60, 0xFF, 0xFF, 0xC0, 0xFF});
    f.PutVaux(40, {0x61, 0x00, 0x07, 0x01, 0xFF});
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), 468, &p));
    EXPECT_EQ(p.sixtyFields, 1u);
    EXPECT_DOUBLE_EQ(p.aspectRatio, 16.0 / 9);
    EXPECT_STREQ(p.recordingDateTime, "1.2.2003 6:5:4");
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), 467, &p));
    EXPECT_EQ(p.sixtyFields, 1u);
    EXPECT_STREQ(p.recordingDateTime, "");
    ASSERT_TRUE(ZeDV::DecodeVideoParamsFromFrame(f.bytes.data(), 457, &p));
    EXPECT_EQ(p.sixtyFields, 1u);
    EXPECT_EQ(p.aspectRatio, 0.0);
}

ZeDVAudioParams AudioParams(uint8_t pc2, uint8_t pc4, uint8_t header = 0x50) {
    dvtest::Frame f = MakeFrame(true);
    f.PutAaux(0, 3, {header, 0xD8, pc2, 0xE0, pc4});
    ZeDVAudioParams p;
    EXPECT_TRUE(ZeDV::DecodeAudioParamsFromFrame(f.bytes.data(), f.bytes.size(), &p));
    return p;
}

TEST(DVAudioParams, RateBitsModeAndChannelFlags) {
    ZeDVAudioParams p;
    for (const auto& r : {std::vector<uint32_t>{0x09, 44100, 16}, {0x12, 32000, 20}, {0x00, 48000, 16}}) {
        p = AudioParams(0x00, static_cast<uint8_t>(r[0]));
        EXPECT_EQ(p.sampleRate, r[1]) << r[0];
        EXPECT_EQ(p.bitsPerSample, r[2]) << r[0];
    }

    const struct {
        uint8_t pc2;
        uint32_t mode;
        uint8_t first, second;
    } modes[] = {
        {0x80, 0, 0, 0}, {0xB1, 0, 0, 0}, {0x20, 2, 0, 0}, {0x30, 2, 1, 1},
        {0x00, 1, 1, 0}, {0x01, 1, 0, 1}, {0x10, 1, 0, 0}, {0x11, 1, 0, 0},
    };
    for (const auto& m : modes) {
        p = AudioParams(m.pc2, 0x00);
        EXPECT_EQ(p.audioModeCode, m.mode) << std::hex << int(m.pc2);
        EXPECT_EQ(p.firstChannel, m.first) << std::hex << int(m.pc2);
        EXPECT_EQ(p.secondChannel, m.second) << std::hex << int(m.pc2);
        EXPECT_EQ(p.sampleRate, 48000u);  // set whatever the mode
    }
    p = AudioParams(0x00, 0x09, 0x51);
    EXPECT_EQ(p.sampleRate, 0u);
    EXPECT_EQ(p.audioModeCode, 0u);

    // A frame that ends right after the source pack is read; one pack byte less and it is missing.
    dvtest::Frame f = MakeFrame(true);
    f.PutAaux(0, 3, {0x50, 0xD8, 0x30, 0xE0, 0x09});
    ASSERT_TRUE(ZeDV::DecodeAudioParamsFromFrame(f.bytes.data(), 4328, &p));
    EXPECT_EQ(p.sampleRate, 44100u);
    EXPECT_EQ(p.audioModeCode, 2u);
    ASSERT_TRUE(ZeDV::DecodeAudioParamsFromFrame(f.bytes.data(), 4327, &p));
    EXPECT_EQ(p.sampleRate, 0u);
    EXPECT_EQ(p.audioModeCode, 0u);
}

TEST(DV12BitExpansion, EverySegmentAndItsEdges) {
    const struct {
        uint16_t code;
        int16_t sample;
    } cases[] = {
        {0x000, 0},      {0x1FF, 511},     {0x200, 512},     {0x2FF, 1022},    {0x300, 1024},   {0x3FF, 2044},
        {0x400, 2048},   {0x4FF, 4088},    {0x500, 4096},    {0x5FF, 8176},    {0x600, 8192},   {0x6FF, 16352},
        {0x700, 16384},  {0x7FF, 32704},   {0x800, -32768},  {0x8FF, -16448},  {0x900, -16384}, {0x9FF, -8224},
        {0xA00, -8192},  {0xAFF, -4112},   {0xB00, -4096},   {0xBFF, -2056},   {0xC00, -2044},  {0xCFF, -1024},
        {0xD00, -1024},  {0xDFF, -514},    {0xE00, -512},    {0xFFF, -1},
    };
    for (const auto& c : cases) EXPECT_EQ(ZeDV::Expand12BitSample(c.code), c.sample) << std::hex << c.code;
}

}  // namespace
