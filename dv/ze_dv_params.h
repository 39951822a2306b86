// DV video and audio parameters that the parser keeps for a DV file, decoded from one frame.
#pragma once

#include <cstdint>

struct ZeDVVideoParams {
    uint32_t sixtyFields = 0;         // 1 for the 525-line (60-field) system, 0 for 625/50
    double aspectRatio = 0.0;         // 4/3, 14/9 or 16/9; 0 when the frame did not say
    uint32_t displayCode = 0;         // 0, 1 or 2, from the display select mode
    uint32_t interlaceCode = 0;       // 0 progressive, 1 interlaced, 2 interlaced with field order bit set
    uint32_t compressionCode = 0;     // 0, 1, or 2 for two or more
    uint32_t recordingStartCode = 0;  // 1 when the source control pack marks a recording start
    char recordingDateTime[128] = {}; // "d.m.yyyy h:m:s", empty when the frame carries no date and time
};

struct ZeDVAudioParams {
    uint32_t sampleRate = 0;     // 48000, 44100 or 32000
    uint32_t bitsPerSample = 0;  // 16 or 20 (12-bit nonlinear counts as 16, its expanded width)
    uint32_t audioModeCode = 0;  // 0 not decoded, 1 or 2: samples per frame slot for block alignment
    uint8_t firstChannel = 0;
    uint8_t secondChannel = 0;
};
