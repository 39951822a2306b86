// The module-wide frame size and set-data-length flag of the decoding path.
#include "graph/ze_decode_state.h"

#include <atomic>

namespace {
std::atomic<uint32_t> g_currentFrameSize{0};
std::atomic<bool> g_setDataLength{false};
}  // namespace

void ZeSetCurrentFrameSize(uint32_t bytes) { g_currentFrameSize.store(bytes, std::memory_order_relaxed); }
uint32_t ZeCurrentFrameSize() { return g_currentFrameSize.load(std::memory_order_relaxed); }

void ZeSetDataLengthFlag(bool on) { g_setDataLength.store(on, std::memory_order_relaxed); }
bool ZeDataLengthFlag() { return g_setDataLength.load(std::memory_order_relaxed); }
