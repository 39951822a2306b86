// The recording date and time that DV frames carry in their REC DATE (0x62) and REC TIME (0x63)
// packs, as display text and as a time-stamp record.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/win32.h"

namespace ZeDV {

constexpr uint8_t kPackRecDate = 0x62;
constexpr uint8_t kPackRecTime = 0x63;
constexpr size_t kDateTimeTextSize = 128;

// Writes "d.m.yyyy h:m:s" (plain decimals, no leading zeros; two-digit years below 25 are 20yy,
// the others 19yy) with its terminating zero into `text` (kDateTimeTextSize bytes). When either
// pack is missing the text is left as it was and the result is false.
bool BuildRecordingDateTimeText(const uint8_t* frame, size_t frameSize, char* text);

// Time stamp in the order seconds, minutes, hours, day of month, month counted from 0,
// years since 1900 (two-digit years below 70 count as 20yy).
struct ZeDVTimestamp {
    uint32_t seconds;
    uint32_t minutes;
    uint32_t hours;
    uint32_t day;
    uint32_t month;
    uint32_t year;
};
static_assert(sizeof(ZeDVTimestamp) == 24, "six 32-bit words");

// False, with `result` untouched, when a pack is missing, which in a short frame includes one
// crossing its end.
bool ReadTimestamp(const uint8_t* frame, size_t frameSize, ZeDVTimestamp* result);

}  // namespace ZeDV
