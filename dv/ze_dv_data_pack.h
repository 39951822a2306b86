// One five-byte DV data pack: the pack header (its type, e.g. 0x60 for VAUX source) and the
// four data bytes PC1..PC4 that follow it.
#pragma once

#include <cstdint>

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
