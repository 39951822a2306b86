// Format records: the allocation rules of SetFormat, its failure reports, and copies that own their
// own block.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "avi/ze_avi_stream_format.h"
#include "reader/status/ze_error_report.h"

namespace {

std::vector<uint8_t> Bytes(size_t n, uint8_t first) {
    std::vector<uint8_t> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>(first + i);
    return v;
}

HRESULT Set(CZeAviStreamFormat& format, const std::vector<uint8_t>& data, uint32_t size, uint32_t type) {
    return format.SetFormat(data.data(), &size, &type);
}

// A video block is at least 40 bytes and an audio block at least 18; a short video format is
// zero-filled up to its minimum. Each kind is read back through its own accessor only.
TEST(RecordsFormat, BlockSizesFollowTheMinimumOfEachKind) {
    struct Case {
        uint32_t type;
        uint32_t size;
        uint32_t expected;
    };
    const Case cases[] = {{1, 12, 40}, {1, 40, 40}, {1, 41, 41}, {1, 1064, 1064},
                          {2, 18, 18}, {2, 20, 20}, {2, 16, 18}, {2, 0, 18}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + "/" + std::to_string(c.size));
        CZeAviStreamFormat format;
        const std::vector<uint8_t> data = Bytes(c.size + 1, 7);
        ASSERT_EQ(Set(format, data, c.size, c.type), S_OK);
        EXPECT_EQ(format.GetFormatType(), c.type);
        EXPECT_EQ(format.GetSize(), c.expected);
        ASSERT_EQ(format.GetFormatBytes(), c.expected);
        const uint8_t* block = static_cast<const uint8_t*>(format.GetFormat());
        EXPECT_EQ(std::memcmp(block, data.data(), c.size), 0);
        if (c.type == 1) {
            for (uint32_t i = c.size; i < c.expected; ++i) EXPECT_EQ(block[i], 0) << i;
        }
        EXPECT_EQ(format.GetBitmapInfoHeader() != nullptr, c.type == 1);
        EXPECT_EQ(format.GetWaveFormat() != nullptr, c.type == 2);
    }
}

TEST(RecordsFormat, DVInfoTakesNineteenWordsAndKeepsTheBlockHeldBefore) {
    CZeAviStreamFormat format;
    const std::vector<uint8_t> video = Bytes(40, 3);
    ASSERT_EQ(Set(format, video, 40, 1), S_OK);
    const void* before = format.GetFormat();

    std::vector<uint8_t> words(19 * 4);
    for (size_t i = 0; i < 19; ++i) words[i * 4] = static_cast<uint8_t>(i + 1);
    ASSERT_EQ(Set(format, words, 32, 3), S_OK);
    EXPECT_EQ(format.GetFormatType(), 3u);
    EXPECT_EQ(format.GetSize(), 32u);
    const CZeAviDVInfoEx* info = format.GetDVInfo();
    ASSERT_NE(info, nullptr);
    // All 19 words are taken, whatever size the block is said to have: the size is recorded only.
    for (int i = 0; i < 19; ++i) EXPECT_EQ(info->GetWord(i), static_cast<uint32_t>(i + 1));
    // The earlier block is not released by the DV set: it still holds its bytes.
    EXPECT_EQ(std::memcmp(before, video.data(), 40), 0);

    ASSERT_EQ(Set(format, words, 76, 3), S_OK);
    EXPECT_EQ(format.GetDVInfo()->GetWord(18), 19u);
    EXPECT_EQ(format.GetDVInfo()->GetWord(19), 0u);  // outside the storage
}

TEST(RecordsFormat, UnknownTypeReleasesTheBlock) {
    CZeAviStreamFormat format;
    ASSERT_EQ(Set(format, Bytes(18, 0), 18, 2), S_OK);
    ASSERT_EQ(Set(format, Bytes(18, 0), 18, 9), S_OK);
    EXPECT_EQ(format.GetFormatType(), 0u);
    EXPECT_EQ(format.GetSize(), 0u);
    EXPECT_EQ(format.GetFormat(), nullptr);
    EXPECT_EQ(format.GetWaveFormat(), nullptr);
}

TEST(RecordsFormat, NullDataIsReportedAndChangesNothing) {
    SetErrorContext("");
    CZeAviStreamFormat format;
    ASSERT_EQ(Set(format, Bytes(18, 5), 18, 2), S_OK);
    uint32_t size = 40;
    uint32_t type = 1;
    EXPECT_EQ(format.SetFormat(nullptr, &size, &type), E_POINTER);
    EXPECT_EQ(format.GetFormatType(), 2u);
    EXPECT_EQ(format.GetSize(), 18u);
    const std::vector<std::string> lines = GetReportList();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("### CZeAviStreamFormat::SetFormat ###"), std::string::npos) << lines[0];
}

TEST(RecordsFormat, CopiesOwnTheirBlocks) {
    CZeAviStreamFormat original;
    original.SetOffset(7);
    original.SetID(0x66727473);
    ASSERT_EQ(Set(original, Bytes(44, 9), 44, 1), S_OK);
    CZeAviStreamFormat copy(original);
    CZeAviStreamFormat assigned;
    ASSERT_EQ(Set(assigned, Bytes(18, 0), 18, 2), S_OK);
    assigned = original;
    for (const CZeAviStreamFormat* f : {&copy, &assigned}) {
        EXPECT_EQ(f->GetFormatType(), 1u);
        EXPECT_EQ(f->GetSize(), 44u);
        EXPECT_EQ(f->GetOffset(), 7u);
        EXPECT_EQ(f->GetID(), 0x66727473u);
        EXPECT_NE(f->GetFormat(), original.GetFormat());
        EXPECT_EQ(std::memcmp(f->GetFormat(), original.GetFormat(), 44), 0);
    }
    original.Reset();
    EXPECT_EQ(original.GetFormat(), nullptr);
    EXPECT_EQ(copy.GetBitmapInfoHeader()->biSize, 0x0C0B0A09u);  // still readable after the original went

    CZeAviStreamFormat dv;
    std::vector<uint8_t> words(76, 0x11);
    ASSERT_EQ(Set(dv, words, 76, 3), S_OK);
    CZeAviStreamFormat dvCopy(dv);
    ASSERT_NE(dvCopy.GetDVInfo(), nullptr);
    EXPECT_NE(dvCopy.GetDVInfo(), dv.GetDVInfo());
    EXPECT_EQ(dvCopy.GetDVInfo()->GetWord(18), 0x11111111u);
}

}  // namespace
