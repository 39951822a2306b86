#include "dv/ze_dv_pack_location.h"

#include <cstring>

void CZeDVDataPack::Assign(const uint8_t* pack) {
    std::memcpy(m_bytes, pack, kSize);
}

namespace ZeDV {
namespace {

bool PackFits(size_t frameSize, uint64_t offset) {
    return offset + CZeDVDataPack::kSize <= frameSize;
}

}  // namespace

uint64_t VauxSlotOffset(uint32_t slot) {
    return kVauxBlockStart + uint64_t{kDifBlockBytes} * (slot / kPacksPerVauxBlock) + 3 +
           uint64_t{CZeDVDataPack::kSize} * (slot % kPacksPerVauxBlock);
}

uint64_t PackSearchOffset(uint32_t step) {
    // The same offsets as VauxSlotOffset: 5 x (i + i / 15) skips the 5-byte ID and tail of each block.
    return uint64_t{CZeDVDataPack::kSize} * (uint64_t{step} + step / kPacksPerVauxBlock) + kVauxBlockStart + 3;
}

uint64_t AauxPackOffset(uint32_t block) {
    return uint64_t{kAudioBlockStride} * block + kFirstAudioBlock + 3;
}

bool GetVauxPackAtSlot(const uint8_t* frame, size_t frameSize, uint32_t slot, const uint8_t** pack) {
    if (slot >= kVauxSlots || pack == nullptr || frame == nullptr) return false;
    const uint64_t offset = VauxSlotOffset(slot);
    if (!PackFits(frameSize, offset)) return false;
    *pack = frame + offset;
    return true;
}

bool GetAauxPackOfBlock(const uint8_t* frame, size_t frameSize, uint32_t block, const uint8_t** pack) {
    if (pack == nullptr || frame == nullptr) return false;
    const uint64_t offset = AauxPackOffset(block);
    if (!PackFits(frameSize, offset)) return false;
    *pack = frame + offset;
    return true;
}

bool FindPack(const uint8_t* frame, size_t frameSize, uint8_t header, CZeDVDataPack* pack) {
    if (frame == nullptr || pack == nullptr) return false;
    for (uint32_t step = 0; step < kPackSearchSteps; ++step) {
        const uint64_t offset = PackSearchOffset(step);
        if (!PackFits(frameSize, offset)) return false;  // offsets only grow
        if (frame[offset] == header) {
            pack->Assign(frame + offset);
            return true;
        }
    }
    return false;
}

}  // namespace ZeDV
