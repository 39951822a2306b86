// The parser's DV steps: DV parameters from one frame, the synthesised audio stream of an
// interleaved DV file, its DV format block and the audio taken out of its frames.
#include <cstdio>
#include <memory>
#include <new>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "avi/ze_avi_fourcc.h"
#include "dv/ze_dv_audio_stream.h"
#include "dv/ze_dv_iavs_audio_format.h"
#include "dv/ze_dv_params_decode.h"
#include "reader/status/ze_error_report.h"

namespace {

constexpr const char* kClass = CZeAviFileParser::kClass;
constexpr uint32_t kAllOnes = 0xFFFFFFFFu;

// Data position and size of entry `entry` of an index; a drop frame (position 0) and an entry
// past the index have no bytes.
void FrameExtent(const CZeAviIndexListChunk& index, uint64_t entry, uint64_t* position, uint32_t* size) {
    *position = 0;
    *size = 0;
    if (entry >= index.GetCount()) return;
    const CZeAviIndexChunk& e = index.At(static_cast<size_t>(entry));
    if (e.GetPosition() == 0) return;
    *position = e.GetPosition();
    *size = e.GetSize();
}

// A zeroed frame buffer for the two parameter steps, sized by the frame's index entry; reports
// under `method`. GetFrame may deliver any frame of the video stream (a drop frame brings the
// last frame read), so the buffer never holds less than the largest of them.
// A read never delivers more bytes than the file holds, so the buffer is capped at the file's
// size: a damaged index or header cannot make us allocate gigabytes for a small file.
HRESULT AllocateFrame(uint32_t size, uint32_t largestFrame, uint64_t fileSize, std::vector<uint8_t>* frame,
                      const char* method) {
    // An entry past the index has the size all ones; such an allocation is refused outright.
    if (size == kAllOnes) return ReportError(kClass, method, E_OUTOFMEMORY);
    try {
        const uint64_t wanted = size > largestFrame ? size : largestFrame;
        frame->assign(static_cast<size_t>(wanted < fileSize ? wanted : fileSize), 0);
    } catch (const std::bad_alloc&) {
        return ReportError(kClass, method, E_OUTOFMEMORY);
    }
    return S_OK;
}

}  // namespace

HRESULT CZeAviFileParser::ReadParameterFrame(uint64_t number, std::vector<uint8_t>* frame, size_t* got) {
    uint64_t bytesRead = 0;
    uint8_t flags = 0;
    int16_t tolerance = 0;
    const HRESULT hr = GetFrame(frame->data(), &number, &bytesRead, &flags, &tolerance);
    if (FAILED(hr)) return hr;
    // bytesRead is all ones only for a blank frame past the end, which the callers' lookups exclude.
    *got = bytesRead > frame->size() ? frame->size() : static_cast<size_t>(bytesRead);
    return S_OK;
}

HRESULT CZeAviFileParser::DecodeDVVideoParams() {
    const CZeAviStreamList* principal = GetPrincipalStream();
    if (principal == nullptr || principal->GetIndexList().IsEmpty()) {
        return ReportError(kClass, "DecodeDVVideoParams", E_FAIL);
    }
    m_dvVideo = ZeDVVideoParams{};
    const uint64_t first = GetMainHeader().GetInitialFrames();
    uint64_t position = 0;
    uint32_t size = 0;
    LookupEntry(0, first, &position, &size);
    if (size == 0) return ReportError(kClass, "DecodeDVVideoParams", E_AVI_STREAMINDEX);
    std::vector<uint8_t> frame;
    HRESULT hr = AllocateFrame(size, GetMaxVideoFrameSize(), GetFileSize(), &frame, "DecodeDVVideoParams");
    if (FAILED(hr)) return hr;

    // The frame after the first is tried first. One larger than the first counts as a failed read
    // (it would not fit a buffer sized for the first), so the first frame is used instead.
    uint64_t nextPosition = 0;
    uint32_t nextSize = 0;
    LookupEntry(GetFirstVideoStreamNumber(), first + 1, &nextPosition, &nextSize);
    const bool tooLarge = nextSize != kAllOnes && nextSize > size;
    size_t got = 0;
    hr = tooLarge ? E_FAIL : ReadParameterFrame(first + 1, &frame, &got);
    if (FAILED(hr) && FAILED(hr = ReadParameterFrame(first, &frame, &got))) return hr;
    // A frame too short for some packs leaves their parameters 0, as a frame without them does.
    ZeDV::DecodeVideoParamsFromFrame(frame.data(), got, &m_dvVideo);
    return S_OK;
}

HRESULT CZeAviFileParser::DecodeDVAudioParams() {
    const CZeAviStreamList* principal = GetPrincipalStream();
    if (principal == nullptr || principal->GetIndexList().IsEmpty()) {
        return ReportError(kClass, "DecodeDVAudioParams", E_FAIL);
    }
    m_dvAudio = ZeDVAudioParams{};
    const uint64_t number = GetMainHeader().GetInitialFrames();
    uint64_t position = 0;
    uint32_t size = 0;
    LookupEntry(0, number, &position, &size);
    std::vector<uint8_t> frame;
    HRESULT hr = AllocateFrame(size, GetMaxVideoFrameSize(), GetFileSize(), &frame, "DecodeDVAudioParams");
    if (FAILED(hr)) return hr;
    size_t got = 0;
    if (FAILED(hr = ReadParameterFrame(number, &frame, &got))) return hr;
    ZeDV::DecodeAudioParamsFromFrame(frame.data(), got, &m_dvAudio);
    return S_OK;
}

HRESULT CZeAviFileParser::CreateIavsAudioStreams() {
    const CZeAviStreamList* principal = GetPrincipalStream();
    if (principal == nullptr || principal->GetHeader().GetScale() == 0) return S_FALSE;
    const CZeAviStreamHeader& video = principal->GetHeader();

    ZeDV::IavsVideoTiming timing;
    timing.rate = video.GetRate();
    timing.scale = video.GetScale();
    timing.length = video.GetLength();
    timing.initialFrames = GetMainHeader().GetInitialFrames();
    ZeDV::IavsAudioHeader values;
    WAVEFORMATEX wave = {};
    if (!ZeDV::ComputeIavsAudioFormat(timing, m_dvAudio, &values, &wave)) {
        // A rate below the scale makes fewer than one frame per second, and every length of the
        // audio stream would divide by zero: the file is read without its DV sound.
        char line[160];
        std::snprintf(line, sizeof(line),
                      "interleaved DV stream rate %u / scale %u is below one frame per second: no audio stream\r\n",
                      timing.rate, timing.scale);
        LogLine(1, line);
        return S_FALSE;
    }

    CZeAviStreamList list;
    CZeAviStreamHeader& header = list.GetHeader();
    header.SetFccType(ZeAvi::kAuds);
    header.SetInitialFrames(values.dwInitialFrames);
    header.SetScale(values.dwScale);
    header.SetRate(values.dwRate);
    header.SetLength(values.dwLength);
    header.SetSuggestedBufferSize(values.dwSuggestedBufferSize);
    header.SetSampleSize(values.dwSampleSize);
    uint32_t formatSize = sizeof(WAVEFORMATEX);
    uint32_t formatType = CZeAviStreamFormat::kAudio;
    HRESULT hr = list.GetFormat().SetFormat(&wave, &formatSize, &formatType);
    if (FAILED(hr)) return hr;

    try {
        // Frames are read into this buffer, and no read yields more than the file holds: the
        // suggested size is capped at the file's size so a damaged header cannot claim gigabytes.
        const uint64_t suggested = video.GetSuggestedBufferSize();
        m_dvFrameBuffer = std::vector<uint8_t>(static_cast<size_t>(suggested < GetFileSize() ? suggested : GetFileSize()));
        m_dvAudioStream = std::make_shared<ZeDV::CZeDVAudioStream>();
    } catch (const std::bad_alloc&) {
        return ReportError(kClass, "CreateIavsAudioStreams", E_OUTOFMEMORY);
    }
    CZeAviHeaderList(m_aviFile).AddStream(std::move(list));
    return S_OK;
}

HRESULT CZeAviFileParser::GetSampleFromStream(uint64_t* position, void* buffer, uint64_t* count) {
    if (position == nullptr || count == nullptr) return ReportError(kClass, "GetSampleFromStream", E_POINTER);
    if (buffer == nullptr || *count == 0) return S_OK;
    const WAVEFORMATEX* wave = GetAudioFormat();
    const CZeAviStreamList* principal = GetPrincipalStream();
    if (wave == nullptr || principal == nullptr || m_dvAudioStream == nullptr) {
        return ReportError(kClass, "GetSampleFromStream", E_FAIL);
    }
    ZeDV::CZeDVAudioStream& audio = *m_dvAudioStream;
    if (!audio.IsReady()) {
        // The frames are looked up through the parser on every call, so the reader holds no
        // pointer into the record tree.
        ZeDV::FrameAccess access;
        access.frameCount = [this]() -> uint64_t {
            const CZeAviStreamList* dv = GetPrincipalStream();
            return dv != nullptr ? dv->GetIndexList().GetCount() : 0;
        };
        access.frameSize = [this](uint64_t frame) {
            uint64_t at = 0;
            uint32_t size = 0;
            if (const CZeAviStreamList* dv = GetPrincipalStream()) FrameExtent(dv->GetIndexList(), frame, &at, &size);
            return size;
        };
        access.readFrame = [this](uint64_t frame, uint32_t offset, uint8_t* out, uint32_t size,
                                  uint32_t* bytesRead) -> HRESULT {
            *bytesRead = 0;
            uint64_t at = 0;
            uint32_t stored = 0;
            if (const CZeAviStreamList* dv = GetPrincipalStream()) FrameExtent(dv->GetIndexList(), frame, &at, &stored);
            if (stored <= offset) return S_OK;
            HRESULT hr = SeekTo(at + offset);
            if (FAILED(hr)) return hr;
            uint64_t want = stored - offset < size ? stored - offset : size;
            uint64_t got = 0;
            hr = Read(out, &want, &got);
            if (FAILED(hr)) return hr;
            *bytesRead = static_cast<uint32_t>(got);
            return S_OK;
        };
        ZeDV::PcmFormat format;
        format.channels = wave->nChannels;
        format.bitsPerSample = wave->wBitsPerSample;
        format.sampleRate = wave->nSamplesPerSec;
        format.frameRate = principal->GetHeader().GetRate();
        format.frameScale = principal->GetHeader().GetScale();
        audio.Reset(std::move(access), format, &m_dvFrameBuffer);
    }
    return audio.Read(*position, static_cast<uint8_t*>(buffer), *count);
}

HRESULT CZeAviFileParser::FillInterleavedVideoAudioStreamFormatHeader(uint64_t position, uint32_t size,
                                                                      CZeAviStreamFormat& format) {
    // Words 0-7 are the DVINFO block as stored (AAuxSrc, AAuxCtl, AAuxSrc1, AAuxCtl1, VAuxSrc,
    // VAuxCtl, two reserved words); whatever the chunk holds beyond, up to the record's words, is
    // kept too. The rest stays 0: the file's DV parameters are taken from its frames.
    CZeAviDVInfoEx info;
    const uint64_t stored = sizeof(uint32_t) * CZeAviDVInfoEx::kStoredWords;
    const uint64_t wanted = size < stored ? size : stored;
    if (wanted != 0) {
        HRESULT hr = SeekTo(position);
        if (FAILED(hr)) return hr;
        hr = ReadExact(info.Words(), wanted, "FillInterleavedVideoAudioStreamFormatHeader");
        if (FAILED(hr)) return hr;
    }
    uint32_t type = CZeAviStreamFormat::kDVInfo;
    return format.SetFormat(info.Words(), &size, &type);
}

HRESULT CZeAviFileParser::DecodeCameraValue(const ZeDV::CameraValue& value, const uint8_t* frame, size_t frameSize,
                                            uint32_t* result) {
    if (frame == nullptr || result == nullptr) return ReportError(kClass, value.decoderName, E_POINTER);
    return ZeDV::ReadCameraValue(value, frame, frameSize, result) ? S_OK : E_ABORT;
}

HRESULT CZeAviFileParser::GetCameraValue(const ZeDV::CameraValue& value, const uint8_t* frame, size_t frameSize,
                                         ZeDV::CameraValueDescriptor* descriptor) {
    if (frame == nullptr || descriptor == nullptr || descriptor->result == nullptr)
        return ReportError(kClass, value.accessorName, E_POINTER);
    if (descriptor->size != 4) return ReportError(kClass, value.accessorName, E_INVALIDARG);
    const HRESULT hr = DecodeCameraValue(value, frame, frameSize, descriptor->result);
    if (FAILED(hr)) {
        *descriptor = ZeDV::CameraValueDescriptor{};
        return hr;
    }
    descriptor->type = ZeDV::kCameraValueType;
    descriptor->parameterId = value.descriptorId;
    return S_OK;
}

HRESULT CZeAviFileParser::DecodeDVTimestamp(const uint8_t* frame, size_t frameSize, ZeDV::ZeDVTimestamp* result) {
    if (frame == nullptr || result == nullptr) return ReportError(kClass, "DecodeDVTimestamp", E_POINTER);
    return ZeDV::ReadTimestamp(frame, frameSize, result) ? S_OK : E_ABORT;
}
