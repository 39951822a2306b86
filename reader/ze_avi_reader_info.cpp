// Who the module is, whether it takes a file, and what the file holds: GetModuleInfo, both CheckFile
// entries and GetStreamInfo.
#include <cstring>
#include <optional>

#include "avi/ze_avi_fourcc.h"

#include "reader/ze_avi_reader_internal.h"

using ZeAvi::FourCC;
using ze_reader::Guarded;
using ze_reader::Report;

namespace {

// A copy of text in task memory for the host to free; null when the allocation fails.
char* TaskString(const char* text) {
    const size_t bytes = std::strlen(text) + 1;
    char* copy = static_cast<char*>(CoTaskMemAlloc(bytes));
    if (copy) std::memcpy(copy, text, bytes);
    return copy;
}

constexpr uint32_t kStreamInfoFlags = 1375;        // 0x55F
constexpr uint32_t kAspectKnownFlag = 0x200;
constexpr uint32_t kAvcFormatFlag = 0x01000000;
constexpr uint32_t kCheckFileValue = 45;
constexpr double kWide = 16.0 / 9.0;
constexpr double kStandard = 4.0 / 3.0;

}  // namespace

HRESULT STDMETHODCALLTYPE CZEAviReader::GetModuleInfo(ZeModuleInfo* info) {
    if (!info) return Report("GetModuleInfo", E_POINTER);
    LockGuard lock(*this);
    std::memset(reinterpret_cast<uint8_t*>(info) + sizeof(info->cbSize), 0, sizeof(*info) - sizeof(info->cbSize));
    info->cbSize = sizeof(ZeModuleInfo);
    info->clsid = CLSID_ZEAviReaderModule;
    info->version = 1;
    info->reserved = 0;
    info->fileType = TaskString("AVI");
    info->description = TaskString("AVI Import Module");
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::CheckFile(LPCSTR path, DWORD* flags, DWORD* value) {
    if (!path) return Report("CheckFile", E_POINTER);
    LockGuard lock(*this);
    return Guarded("CheckFile", [&] { return CheckFileLocked(path, flags, value); });
}

HRESULT CZEAviReader::CheckFileLocked(LPCSTR path, DWORD* flags, DWORD* value) {
    // The outputs are written before the check and stay written when it fails.
    if (value) *value = kCheckFileValue;
    if (flags) *flags = 0;
    return Src().QuickCheck(path);
}

HRESULT STDMETHODCALLTYPE CZEAviReader::CheckFile(LPCSTR path) { return CheckFile(path, nullptr, nullptr); }

HRESULT STDMETHODCALLTYPE CZEAviReader::GetStreamInfo(ZeStreamInfo* info) {
    if (!info) return Report("GetStreamInfo", E_POINTER);
    LockGuard lock(*this);
    return Guarded("GetStreamInfo", [&] { return GetStreamInfoLocked(info); });
}

HRESULT CZEAviReader::GetStreamInfoLocked(ZeStreamInfo* info) {
    CZeReaderSource& source = Src();
    if (!source.IsParsed()) return Report("GetStreamInfo", E_AVI_PARSE);

    std::memset(info, 0, sizeof(*info));
    info->cbSize = sizeof(ZeStreamInfo);
    info->capabilities = kStreamInfoFlags;
    info->streamKinds = source.AudioHeader() ? 8 : 1;

    const std::optional<ZeXpStreamHeader> header = source.VideoHeader();
    const std::optional<BITMAPINFOHEADER> picture = source.VideoPicture();
    // A file without video answers E_POINTER: the host treats the record as unusable.
    if (!header || !picture) return Report("GetStreamInfo", E_POINTER);
    const BITMAPINFOHEADER* format = &*picture;

    if (m_scaleDivisor != 0) {
        info->displayWidth = format->biWidth / m_scaleDivisor;
        info->displayHeight = format->biHeight / m_scaleDivisor;
    }
    info->width = format->biWidth;
    info->height = format->biHeight;
    if (header->dwScale != 0)
        info->frameRate = static_cast<double>(header->dwRate) / static_cast<double>(header->dwScale);

    info->aspectRatio = DisplayAspectRatio();
    if (info->aspectRatio > 0.0) info->capabilities += kAspectKnownFlag;
    if (format->biCompression == FourCC("H264")) info->formatFlags += kAvcFormatFlag;

    info->frameCount = static_cast<uint32_t>(source.VideoFrameCount());
    info->text[0] = '\0';
    std::memcpy(info->fileType, "AVI", 4);

    if (const WAVEFORMATEX* audio = source.AudioFormat()) ze_reader::CopyWaveFields(*audio, info);
    return S_OK;
}

// Display aspect ratio, width to height: what a DV frame says, else the common 16:9 frame sizes, else
// the aspect byte that MPEG-2 style sequence headers carry 10 bytes into the first video chunk.
double CZEAviReader::DisplayAspectRatio() {
    CZeReaderSource& source = Src();
    if (source.IsDvVideo() && source.DVVideoParams().aspectRatio > 0.0) return source.DVVideoParams().aspectRatio;

    const BITMAPINFOHEADER* format = source.VideoFormat();
    if (format && format->biWidth == 1920 && format->biHeight == 1080) return kWide;
    if (format) {
        if ((format->biWidth == 1440 && format->biHeight == 1080) ||
            (format->biWidth == 1280 && format->biHeight == 720))
            return kWide;
    }

    const uint32_t video = source.VideoStream();
    if (source.IndexCount(video) == 0) return 0.0;
    uint8_t aspectByte = 0;
    uint64_t bytesRead = 0;
    const uint64_t position = source.IndexRow(video, 0).qwPosition + 10;
    if (FAILED(source.ReadAt(position, &aspectByte, 1, &bytesRead)) || bytesRead != 1) return 0.0;
    if (aspectByte == 0x25) return kWide;
    if (aspectByte == 0x15) return kStandard;
    return 0.0;
}
