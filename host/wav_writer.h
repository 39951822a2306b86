// Writes PCM audio into a RIFF/WAVE file; the sizes are filled in when the writer is closed.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/win32.h"

class WavWriter {
public:
    // Throws HostError when the file cannot be created.
    WavWriter(const std::string& path, const WAVEFORMATEX& format);
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    void Write(const void* data, size_t bytes);
    // Completes the header; throws when the file could not be written.
    void Close();

private:
    std::string m_path;
    FILE* m_file = nullptr;
    uint64_t m_dataBytes = 0;
};
