// Field widths of the fixed chunk bodies the parser reads, in file order. Each body is read in one
// piece and decoded at its offsets; the widths tell where reading its fields one after another
// would have stopped when the file ends inside it (CZeAviFileParser::ShortBody).
#pragma once

#include <cstddef>
#include <cstdint>

namespace ZeAvi {

struct FieldLayout {
    const uint8_t* widths;
    size_t count;

    constexpr uint64_t Bytes() const {
        uint64_t total = 0;
        for (size_t i = 0; i < count; ++i) total += widths[i];
        return total;
    }
    // Bytes of the leading fields that end within the first `limit` bytes.
    constexpr uint64_t BytesOfFieldsWithin(uint64_t limit) const {
        uint64_t end = 0;
        for (size_t i = 0; i < count && end + widths[i] <= limit; ++i) end += widths[i];
        return end;
    }
    // True when `offset` lies between two fields (not at the start or the end of the body).
    constexpr bool IsBetweenFields(uint64_t offset) const {
        uint64_t end = 0;
        for (size_t i = 0; i + 1 < count; ++i) {
            end += widths[i];
            if (end == offset) return true;
        }
        return false;
    }
};

template <size_t N>
constexpr FieldLayout Layout(const uint8_t (&widths)[N]) {
    return FieldLayout{widths, N};
}

// Chunk identifier and size; a list adds its type (as does the RIFF header its form type).
inline constexpr uint8_t kChunkHeadWidths[] = {4, 4};
inline constexpr uint8_t kListHeadWidths[] = {4, 4, 4};
// 'avih': ten fields and four reserved words.
inline constexpr uint8_t kMainHeaderWidths[] = {4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};
// 'strh': fccType .. dwSampleSize, then the four 16-bit edges of rcFrame.
inline constexpr uint8_t kStreamHeaderWidths[] = {4, 4, 4, 2, 2, 4, 4, 4, 4, 4, 4, 4, 4, 2, 2, 2, 2};
// BITMAPINFOHEADER and WAVEFORMATEX.
inline constexpr uint8_t kBitmapHeaderWidths[] = {4, 4, 4, 2, 2, 4, 4, 4, 4, 4, 4};
inline constexpr uint8_t kWaveFormatWidths[] = {2, 2, 4, 4, 2, 2, 2};
// The header 'indx' and 'ix##' share after their chunk head: wLongsPerEntry, bIndexSubType,
// bIndexType, nEntriesInUse, dwChunkId.
inline constexpr uint8_t kIndexHeaderWidths[] = {2, 1, 1, 4, 4};
// One super index entry: qwOffset, dwSize, dwDuration.
inline constexpr uint8_t kSuperIndexEntryWidths[] = {8, 4, 4};
// The head of an 'ix##' chunk: chunk head, the shared index header, qwBaseOffset, dwReserved3.
inline constexpr uint8_t kStandardIndexHeadWidths[] = {4, 4, 2, 1, 1, 4, 4, 8, 4};

inline constexpr FieldLayout kChunkHead = Layout(kChunkHeadWidths);
inline constexpr FieldLayout kListHead = Layout(kListHeadWidths);
inline constexpr FieldLayout kMainHeaderBody = Layout(kMainHeaderWidths);
inline constexpr FieldLayout kStreamHeaderBody = Layout(kStreamHeaderWidths);
inline constexpr FieldLayout kBitmapHeaderBody = Layout(kBitmapHeaderWidths);
inline constexpr FieldLayout kWaveFormatBody = Layout(kWaveFormatWidths);
inline constexpr FieldLayout kIndexHeaderBody = Layout(kIndexHeaderWidths);
inline constexpr FieldLayout kSuperIndexEntryBody = Layout(kSuperIndexEntryWidths);
inline constexpr FieldLayout kStandardIndexHead = Layout(kStandardIndexHeadWidths);

static_assert(kMainHeaderBody.Bytes() == 56 && kStreamHeaderBody.Bytes() == 56, "avih and strh bodies");
static_assert(kBitmapHeaderBody.Bytes() == 40 && kWaveFormatBody.Bytes() == 18, "format headers");
static_assert(kStandardIndexHead.Bytes() == 32 && kSuperIndexEntryBody.Bytes() == 16, "OpenDML records");

}  // namespace ZeAvi
