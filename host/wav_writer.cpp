#include "host/wav_writer.h"

#include <cerrno>
#include <cstring>

#include "host/host_module.h"

namespace {

void PutU32(uint8_t* at, uint32_t value) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}
void PutU16(uint8_t* at, uint16_t value) {
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>(value >> 8);
}

constexpr size_t kHeaderBytes = 44;

HostError WriteError(const std::string& path) {
    return HostError(E_FAIL, "writing " + path + ": " + std::strerror(errno));
}

}  // namespace

WavWriter::WavWriter(const std::string& path, const WAVEFORMATEX& format) : m_path(path) {
    m_file = std::fopen(path.c_str(), "wb");
    if (!m_file) throw WriteError(path);
    uint8_t header[kHeaderBytes] = {};
    std::memcpy(header, "RIFF", 4);
    std::memcpy(header + 8, "WAVEfmt ", 8);
    PutU32(header + 16, 16);
    PutU16(header + 20, format.wFormatTag);
    PutU16(header + 22, format.nChannels);
    PutU32(header + 24, format.nSamplesPerSec);
    PutU32(header + 28, format.nAvgBytesPerSec);
    PutU16(header + 32, format.nBlockAlign);
    PutU16(header + 34, format.wBitsPerSample);
    std::memcpy(header + 36, "data", 4);
    if (std::fwrite(header, 1, sizeof(header), m_file) != sizeof(header)) throw WriteError(path);
}

WavWriter::~WavWriter() {
    if (m_file) std::fclose(m_file);
}

void WavWriter::Write(const void* data, size_t bytes) {
    if (bytes && std::fwrite(data, 1, bytes, m_file) != bytes) throw WriteError(m_path);
    m_dataBytes += bytes;
}

void WavWriter::Close() {
    if (!m_file) return;
    // RIFF data is padded to an even length.
    if (m_dataBytes % 2) {
        const uint8_t pad = 0;
        if (std::fwrite(&pad, 1, 1, m_file) != 1) throw WriteError(m_path);
    }
    uint8_t size[4];
    const uint64_t riff = 36 + m_dataBytes + (m_dataBytes % 2);
    PutU32(size, static_cast<uint32_t>(riff > 0xFFFFFFFFu ? 0xFFFFFFFFu : riff));
    if (std::fseek(m_file, 4, SEEK_SET) != 0 || std::fwrite(size, 1, 4, m_file) != 4) throw WriteError(m_path);
    PutU32(size, static_cast<uint32_t>(m_dataBytes > 0xFFFFFFFFu ? 0xFFFFFFFFu : m_dataBytes));
    if (std::fseek(m_file, 40, SEEK_SET) != 0 || std::fwrite(size, 1, 4, m_file) != 4) throw WriteError(m_path);
    const int closed = std::fclose(m_file);
    m_file = nullptr;
    if (closed != 0) throw WriteError(m_path);
}
