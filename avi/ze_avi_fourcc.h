// FOURCC helpers of the file layer, the AVI records and the parser: the one builder of chunk
// identifiers from text, and the case-blind comparisons RIFF readers use.
#pragma once

#include <cstdint>
#include <string>

namespace ZeAvi {

// First character in the lowest byte, as a RIFF identifier read from disk as a little-endian word.
// Each character is widened as a signed byte before it is shifted in; for ASCII that never
// matters. A text shorter than four characters ends at its NUL: the missing characters are 0.
constexpr uint32_t FourCC(const char* text) {
    uint32_t value = 0;
    for (int i = 0; i < 4 && text[i] != '\0'; ++i) {
        value |= static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(text[i]))) << (8 * i);
    }
    return value;
}

constexpr char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr char FourCCChar(uint32_t fourcc, int i) { return static_cast<char>((fourcc >> (8 * i)) & 0xFFu); }

// Case-blind comparison of the first `count` characters (1..4) of two identifiers.
constexpr bool SameFourCC(uint32_t a, uint32_t b, int count = 4) {
    for (int i = 0; i < count; ++i) {
        if (LowerAscii(FourCCChar(a, i)) != LowerAscii(FourCCChar(b, i))) return false;
    }
    return true;
}

// The identifier as four characters (NUL bytes kept), for messages and tests.
inline std::string FourCCText(uint32_t fourcc) {
    std::string s(4, '\0');
    for (int i = 0; i < 4; ++i) s[static_cast<size_t>(i)] = FourCCChar(fourcc, i);
    return s;
}

constexpr uint32_t kRIFF = FourCC("RIFF");
constexpr uint32_t kLIST = FourCC("LIST");
constexpr uint32_t kAVI_ = FourCC("AVI ");
constexpr uint32_t kHdrl = FourCC("hdrl");
constexpr uint32_t kAvih = FourCC("avih");
constexpr uint32_t kStrl = FourCC("strl");
constexpr uint32_t kStrh = FourCC("strh");
constexpr uint32_t kStrf = FourCC("strf");
constexpr uint32_t kStrn = FourCC("strn");
constexpr uint32_t kIndx = FourCC("indx");
constexpr uint32_t kMovi = FourCC("movi");
constexpr uint32_t kIdx1 = FourCC("idx1");
constexpr uint32_t kVids = FourCC("vids");
constexpr uint32_t kAuds = FourCC("auds");
constexpr uint32_t kIavs = FourCC("iavs");
constexpr uint32_t kDvsd = FourCC("dvsd");

}  // namespace ZeAvi
