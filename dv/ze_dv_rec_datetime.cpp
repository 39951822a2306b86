#include "dv/ze_dv_rec_datetime.h"

#include <cstdio>
#include <cstring>

#include "dv/ze_dv_pack_location.h"

namespace ZeDV {
namespace {

// Two BCD digits: units in bits 0-3, tens in the bits selected by tensMask above them.
uint32_t Bcd(uint8_t byte, uint8_t tensMask) {
    return ((byte & tensMask) >> 4) * 10u + (byte & 0x0Fu);
}

struct DateTimeFields {
    uint32_t day, month, twoDigitYear, hours, minutes, seconds;
};

bool ReadDateTime(const uint8_t* frame, size_t frameSize, DateTimeFields* out) {
    CZeDVDataPack date;
    CZeDVDataPack time;
    if (!FindPack(frame, frameSize, kPackRecDate, &date) || !FindPack(frame, frameSize, kPackRecTime, &time)) {
        return false;
    }
    out->day = Bcd(date.GetPC2(), 0x30);
    out->month = Bcd(date.GetPC3(), 0x10);
    out->twoDigitYear = Bcd(date.GetPC4(), 0xF0);
    out->hours = Bcd(time.GetPC4(), 0x30);
    out->minutes = Bcd(time.GetPC3(), 0x70);
    out->seconds = Bcd(time.GetPC2(), 0x70);
    return true;
}

}  // namespace

bool BuildRecordingDateTimeText(const uint8_t* frame, size_t frameSize, char* text) {
    DateTimeFields f;
    if (text == nullptr || !ReadDateTime(frame, frameSize, &f)) return false;
    const uint32_t year = f.twoDigitYear < 25 ? 2000 + f.twoDigitYear : 1900 + f.twoDigitYear;
    char line[kDateTimeTextSize];
    std::snprintf(line, sizeof(line), "%d.%d.%d %d:%d:%d", static_cast<int>(f.day), static_cast<int>(f.month),
                  static_cast<int>(year), static_cast<int>(f.hours), static_cast<int>(f.minutes),
                  static_cast<int>(f.seconds));
    std::memcpy(text, line, std::strlen(line) + 1);
    return true;
}

bool ReadTimestamp(const uint8_t* frame, size_t frameSize, ZeDVTimestamp* result) {
    DateTimeFields f;
    if (!ReadDateTime(frame, frameSize, &f)) return false;
    result->seconds = f.seconds;
    result->minutes = f.minutes;
    result->hours = f.hours;
    result->day = f.day;
    result->month = f.month - 1;  // a month field of 0 wraps, as the 32-bit word does
    result->year = f.twoDigitYear < 70 ? f.twoDigitYear + 100 : f.twoDigitYear;
    return true;
}

}  // namespace ZeDV
