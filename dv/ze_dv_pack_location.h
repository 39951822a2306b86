// DV data packs: the five-byte pack record, where packs sit in a DV frame held in memory, and the
// search for a pack by its type. Every search takes the frame's size and never looks past it: a
// pack that would reach beyond the end of the buffer counts as absent.
#pragma once

#include <cstddef>
#include <cstdint>

// One five-byte DV data pack: the pack header (its type, e.g. 0x60 for VAUX source) and the
// four data bytes PC1..PC4 that follow it.
class CZeDVDataPack {
public:
    CZeDVDataPack() = default;
    virtual ~CZeDVDataPack() = default;

    uint8_t GetHeader() const { return m_bytes[0]; }
    uint8_t GetPC1() const { return m_bytes[1]; }
    uint8_t GetPC2() const { return m_bytes[2]; }
    uint8_t GetPC3() const { return m_bytes[3]; }
    uint8_t GetPC4() const { return m_bytes[4]; }

    void SetHeader(uint8_t value) { m_bytes[0] = value; }
    void SetPC1(uint8_t value) { m_bytes[1] = value; }
    void SetPC2(uint8_t value) { m_bytes[2] = value; }
    void SetPC3(uint8_t value) { m_bytes[3] = value; }
    void SetPC4(uint8_t value) { m_bytes[4] = value; }

    // Byte i of the pack: 0 the header, 1..4 PC1..PC4; any other index reads 0.
    uint8_t GetByte(uint32_t index) const { return index < kSize ? m_bytes[index] : 0; }
    // Takes all five bytes from a pack as it lies in a frame.
    void Assign(const uint8_t* pack);

    static constexpr uint32_t kSize = 5;

private:
    uint8_t m_bytes[kSize] = {};
};

namespace ZeDV {

constexpr uint32_t kDifBlockBytes = 80;
constexpr uint32_t kDifSequenceBytes = 12000;  // 150 DIF blocks
constexpr uint32_t kVauxBlockStart = 240;      // block 3 of the first sequence
constexpr uint32_t kPacksPerVauxBlock = 15;
constexpr uint32_t kVauxSlots = 45;            // three VAUX blocks of 15 packs
constexpr uint32_t kAudioBlockStride = 1280;   // one audio block, then 15 video blocks
constexpr uint32_t kFirstAudioBlock = 480;     // block 6 of a sequence
constexpr uint32_t kPackSearchSteps = 1497;

// Byte offset of VAUX slot 0..44 of the first sequence (pack slot % 15 of VAUX block slot / 15).
uint64_t VauxSlotOffset(uint32_t slot);
// Byte offset of step i of the pack search: the slot arithmetic carried on past the VAUX blocks.
uint64_t PackSearchOffset(uint32_t step);
// Byte offset of the AAUX pack of audio block n of the first sequence.
uint64_t AauxPackOffset(uint32_t block);

// The pack of a fixed VAUX slot; false for a slot above 44, no out pointer or a short frame.
bool GetVauxPackAtSlot(const uint8_t* frame, size_t frameSize, uint32_t slot, const uint8_t** pack);
// The AAUX pack of audio block n; false for no out pointer or a short frame.
bool GetAauxPackOfBlock(const uint8_t* frame, size_t frameSize, uint32_t block, const uint8_t** pack);
// First pack whose header byte equals `header`, searched step by step through the first
// sequence without skipping audio or video blocks (a matching byte there counts). Copies the five
// bytes into `pack`; false when nothing matches inside the frame or `pack` is null.
bool FindPack(const uint8_t* frame, size_t frameSize, uint8_t header, CZeDVDataPack* pack);

}  // namespace ZeDV
