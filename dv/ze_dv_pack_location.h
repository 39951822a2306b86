// Where data packs sit in a DV frame held in memory, and the search for a pack by its type.
// Every function takes the frame's size and never looks past it: a pack that would reach beyond
// the end of the buffer counts as absent.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dv/ze_dv_data_pack.h"

namespace ZeDV {

// The decoders that take one value out of a frame's packs for the host (camera values, the
// recording time stamp) stand for operations of the AVI parser and report under its class name.
constexpr char kPackDecoderClass[] = "CZeAviFileParser";

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
