// Two module-wide values of the decoding path, read by the source filter when it sends a sample on:
//
//   current frame size  the byte size of the compressed frame just read; the frame reading sets it
//                       before it copies the frame into the source filter's sample.
//   set-data-length     whether the sample's data length is set to that size before delivery; the
//                       decoder choice sets it per stream (off for the screen codecs that want the
//                       whole buffer, on for all others). Off until someone sets it, so a sample
//                       keeps the length its allocator gave it.
//
// Shared by every object of the module without a lock; the values are atomic so that a read never
// sees half a write.
#pragma once

#include <cstdint>

void ZeSetCurrentFrameSize(uint32_t bytes);
uint32_t ZeCurrentFrameSize();

void ZeSetDataLengthFlag(bool on);
bool ZeDataLengthFlag();
