// IZEClientServerExchange2: the host reads what the module knows about the open file (headers,
// indexes, DV parameters, recording dates and camera values of single frames) and the colour
// formats, and sets the colour format choice. The parameters and records are described in
// reader/api/ze_exchange.h. These methods take no object lock.
#include <cstring>
#include <string>

#include "dv/ze_dv_camera_values.h"
#include "dv/ze_dv_rec_datetime.h"
#include "reader/ze_avi_reader_internal.h"

using ze_reader::Guarded;
using ze_reader::Report;

namespace {

constexpr const char* kSet = "IZEClientServerExchange2::Set";
constexpr const char* kGet = "IZEClientServerExchange2::Get";
constexpr const char* kCheck = "IZEClientServerExchange2::Check";

struct ColorFormat {
    const char* name;
    const GUID* subtype;
};
// In the order the module tries them for the host.
const ColorFormat kColorFormats[] = {
    {"RGB24", &ZeMediaGuid::Rgb24},
    {"YUY2", &ZeMediaGuid::Yuy2},
    {"RGB32", &ZeMediaGuid::Rgb32},
};
constexpr uint32_t kColorFormatCount = sizeof(kColorFormats) / sizeof(kColorFormats[0]);

bool IsColorFormat(const GUID& subtype) {
    for (const ColorFormat& format : kColorFormats)
        if (IsEqualGUID(*format.subtype, subtype)) return true;
    return false;
}

// What the exchange knows about one parameter for the open file.
struct ParamFacts {
    HRESULT state = E_INVALIDARG;  // S_OK when Get can answer, else the code Get gives
    uint32_t type = ZE_XT_NONE;
    uint32_t bytes = 0;            // exact size, or the least size for text, bytes and index entries
    bool atLeast = false;          // bytes is a lower bound
    uint32_t count = 1;
    std::string name;
};

bool IsCameraParam(uint32_t id) { return id >= ZE_XP_CAMERA_FIRST && id < ZE_XP_CAMERA_FIRST + ZE_XP_CAMERA_ROWS; }

const ZeDV::CameraValue* CameraRow(uint32_t id) {
    const size_t row = id - ZE_XP_CAMERA_FIRST;
    return row < ZeDV::CameraValueCount() ? &ZeDV::CameraValueAt(row) : nullptr;
}

void CopyStreamHeader(const CZeAviStreamHeader& from, ZeXpStreamHeader* to) {
    std::memset(to, 0, sizeof(*to));
    to->fccType = from.GetFccType();
    to->fccHandler = from.GetFccHandler();
    to->dwFlags = from.GetFlags();
    to->wPriority = from.GetPriority();
    to->wLanguage = from.GetLanguage();
    to->dwInitialFrames = from.GetInitialFrames();
    to->dwScale = from.GetScale();
    to->dwRate = from.GetRate();
    to->dwStart = from.GetStart();
    to->dwLength = from.GetLength();
    to->dwSuggestedBufferSize = from.GetSuggestedBufferSize();
    to->dwQuality = from.GetQuality();
    to->dwSampleSize = from.GetSampleSize();
    to->rcFrameLeft = from.GetFrame().left;
    to->rcFrameTop = from.GetFrame().top;
    to->rcFrameRight = from.GetFrame().right;
    to->rcFrameBottom = from.GetFrame().bottom;
}

// The stored bytes of a stream's format block: the bitmap or wave header with what follows it, or
// the words of a DV info block.
const void* FormatBytes(const CZeAviStreamFormat& format, uint32_t* bytes) {
    if (format.GetFormatType() == CZeAviStreamFormat::kDVInfo && format.GetDVInfo()) {
        *bytes = ze_avi_dv_info_ex::kWordCount * 4;
        return format.GetDVInfo()->Words();
    }
    *bytes = format.GetFormat() ? format.GetFormatBytes() : 0;
    return format.GetFormat();
}

ParamFacts Facts(CZeReaderSource& source, uint32_t id, uint32_t stream, uint32_t item) {
    ParamFacts f;
    const bool parsed = source.IsParsed();
    const CZeAviStreamList* list = parsed ? source.Stream(stream) : nullptr;
    const HRESULT fileState = parsed ? S_OK : E_AVI_PARSE;
    const HRESULT streamState = !parsed ? E_AVI_PARSE : (list ? S_OK : E_AVI_STREAMINDEX);
    const uint32_t streamCount = parsed ? static_cast<uint32_t>(source.File().GetStreams().size()) : 0;
    const uint64_t frames = parsed ? source.VideoFrameCount() : 0;
    const HRESULT dvState = !parsed ? E_AVI_PARSE : (source.IsDvVideo() ? S_OK : E_AVI_NOVALIDFILE);
    const HRESULT dvFrameState = dvState != S_OK ? dvState : (item < frames ? S_OK : E_INVALIDARG);

    auto set = [&f](HRESULT state, uint32_t type, uint32_t bytes, const char* name, uint32_t count = 1,
                    bool atLeast = false) {
        f.state = state;
        f.type = type;
        f.bytes = bytes;
        f.name = name;
        f.count = count;
        f.atLeast = atLeast;
    };

    if (IsCameraParam(id)) {
        const ZeDV::CameraValue* row = CameraRow(id);
        if (!row) return f;
        set(dvFrameState, ZE_XT_UINT32, 4, row->name, ZE_XP_CAMERA_ROWS);
        return f;
    }
    switch (id) {
    case ZE_XP_FILE_PATH:
        set(fileState, ZE_XT_TEXT, static_cast<uint32_t>(source.File().GetFileName().size() + 1), "FilePath", 1,
            true);
        break;
    case ZE_XP_STREAM_COUNT:
        set(fileState, ZE_XT_UINT32, 4, "StreamCount");
        break;
    case ZE_XP_MAIN_HEADER:
        set(fileState, ZE_XT_RECORD, sizeof(ZeXpMainHeader), "MainHeader");
        break;
    case ZE_XP_STREAM_HEADER:
        set(streamState, ZE_XT_RECORD, sizeof(ZeXpStreamHeader), "StreamHeader", streamCount);
        break;
    case ZE_XP_STREAM_FORMAT: {
        uint32_t bytes = 0;
        if (list) FormatBytes(list->GetFormat(), &bytes);
        set(streamState == S_OK && bytes == 0 ? E_AVI_VIDEOFORMATHEADER : streamState, ZE_XT_BYTES, bytes,
            "StreamFormat", streamCount, true);
        break;
    }
    case ZE_XP_STREAM_FORMAT_TYPE:
        set(streamState, ZE_XT_UINT32, 4, "StreamFormatType", streamCount);
        break;
    case ZE_XP_STREAM_NAME:
        set(streamState, ZE_XT_TEXT, list ? static_cast<uint32_t>(list->GetStreamName().size() + 1) : 1,
            "StreamName", streamCount, true);
        break;
    case ZE_XP_INDEX_COUNT:
        set(streamState, ZE_XT_UINT32, 4, "IndexCount", streamCount);
        break;
    case ZE_XP_INDEX_ENTRIES: {
        const uint32_t entries = list ? static_cast<uint32_t>(list->GetIndexList().GetCount()) : 0;
        const HRESULT state = streamState != S_OK ? streamState : (item < entries ? S_OK : E_INVALIDARG);
        set(state, ZE_XT_RECORD, sizeof(ZeXpIndexEntry), "IndexEntries", entries, true);
        break;
    }
    case ZE_XP_STREAM_ROLES:
        set(fileState, ZE_XT_RECORD, sizeof(ZeXpStreamRoles), "StreamRoles");
        break;
    case ZE_XP_FRAME_COUNT:
        set(fileState, ZE_XT_UINT32, 4, "FrameCount");
        break;
    case ZE_XP_DV_VIDEO_PARAMS:
        set(dvState, ZE_XT_RECORD, sizeof(ZeXpDVVideoParams), "DVVideoParams");
        break;
    case ZE_XP_DV_AUDIO_PARAMS:
        set(dvState, ZE_XT_RECORD, sizeof(ZeXpDVAudioParams), "DVAudioParams");
        break;
    case ZE_XP_DV_RECORDING_TEXT:
        set(dvFrameState, ZE_XT_TEXT, ZeDV::kDateTimeTextSize, "RecordingDateTime",
            static_cast<uint32_t>(frames), true);
        break;
    case ZE_XP_DV_TIMESTAMP:
        set(dvFrameState, ZE_XT_RECORD, sizeof(ZeXpDVTimestamp), "Timestamp", static_cast<uint32_t>(frames));
        break;
    case ZE_XP_COLOR_FORMAT_COUNT:
        set(S_OK, ZE_XT_UINT32, 4, "ColorFormatCount");
        break;
    case ZE_XP_COLOR_FORMAT_NAME:
        set(item < kColorFormatCount ? S_OK : E_INVALIDARG, ZE_XT_TEXT,
            item < kColorFormatCount ? static_cast<uint32_t>(std::strlen(kColorFormats[item].name) + 1) : 1,
            "ColorFormatName", kColorFormatCount, true);
        break;
    case ZE_XP_COLOR_FORMAT_SUBTYPE:
        set(item < kColorFormatCount ? S_OK : E_INVALIDARG, ZE_XT_GUID, sizeof(GUID), "ColorFormatSubtype",
            kColorFormatCount);
        break;
    case ZE_XP_PREFERRED_COLOR_FORMAT:
        set(S_OK, ZE_XT_GUID, sizeof(GUID), "PreferredColorFormat");
        break;
    case ZE_XP_YUV_COLOR_FORMAT:
        set(S_OK, ZE_XT_GUID, sizeof(GUID), "YuvColorFormat");
        break;
    default:
        break;
    }
    return f;
}

void PutText(ZeExchangeValue* value, const char* text) {
    const size_t bytes = std::strlen(text) + 1;
    std::memcpy(value->pValue, text, bytes);
}

template <class T>
void Put(ZeExchangeValue* value, const T& data) {
    std::memcpy(value->pValue, &data, sizeof(T));
}

}  // namespace

HRESULT STDMETHODCALLTYPE CZEAviReader::Check(DWORD paramId, DWORD stream, DWORD item, DWORD* available,
                                              DWORD* valueType, DWORD* cbValue, DWORD* count, char** name, void*) {
    return Guarded(kCheck, [&] {
        const ParamFacts f = Facts(Src(), paramId, stream, item);
        if (f.type == ZE_XT_NONE) return Report(kCheck, E_INVALIDARG);
        if (available) *available = f.state == S_OK ? 1 : 0;
        if (valueType) *valueType = f.type;
        if (cbValue) *cbValue = f.bytes;
        if (count) *count = f.count;
        if (name) {
            *name = static_cast<char*>(CoTaskMemAlloc(f.name.size() + 1));
            if (!*name) return Report(kCheck, E_OUTOFMEMORY);
            std::memcpy(*name, f.name.c_str(), f.name.size() + 1);
        }
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE CZEAviReader::Get(DWORD paramId, DWORD stream, DWORD item, ZeExchangeValue* value) {
    if (!value || !value->pValue) return Report(kGet, E_POINTER);
    return Guarded(kGet, [&] { return ExchangeGet(paramId, stream, item, value); });
}

HRESULT CZEAviReader::ExchangeGet(DWORD paramId, DWORD stream, DWORD item, ZeExchangeValue* value) {
    CZeReaderSource& source = Src();
    const ParamFacts f = Facts(source, paramId, stream, item);
    if (f.type == ZE_XT_NONE) return Report(kGet, E_INVALIDARG);
    if (f.state != S_OK) return Report(kGet, f.state);

    if (IsCameraParam(paramId)) return ExchangeCamera(paramId - ZE_XP_CAMERA_FIRST, item, value);

    if (f.atLeast ? value->cbValue < f.bytes : value->cbValue != f.bytes) return Report(kGet, E_INVALIDARG);

    uint32_t items = 1;
    const CZeAviStreamList* list = source.Stream(stream);
    switch (paramId) {
    case ZE_XP_FILE_PATH:
        PutText(value, source.File().GetFileName().c_str());
        break;
    case ZE_XP_STREAM_COUNT:
        Put(value, static_cast<uint32_t>(source.File().GetStreams().size()));
        break;
    case ZE_XP_MAIN_HEADER: {
        const CZeAviHeader& h = source.File().GetHeader();
        ZeXpMainHeader record{h.GetMicroSecPerFrame(), h.GetMaxBytesPerSec(), h.GetPaddingGranularity(),
                              h.GetFlags(), h.GetTotalFrames(), h.GetInitialFrames(), h.GetStreams(),
                              h.GetSuggestedBufferSize(), h.GetWidth(), h.GetHeight(),
                              {h.GetReserved(0), h.GetReserved(1), h.GetReserved(2), h.GetReserved(3)}};
        Put(value, record);
        break;
    }
    case ZE_XP_STREAM_HEADER: {
        ZeXpStreamHeader record;
        CopyStreamHeader(list->GetHeader(), &record);
        Put(value, record);
        break;
    }
    case ZE_XP_STREAM_FORMAT: {
        uint32_t bytes = 0;
        const void* data = FormatBytes(list->GetFormat(), &bytes);
        std::memcpy(value->pValue, data, bytes);
        break;
    }
    case ZE_XP_STREAM_FORMAT_TYPE:
        Put(value, list->GetFormat().GetFormatType());
        break;
    case ZE_XP_STREAM_NAME:
        PutText(value, list->GetStreamName().c_str());
        break;
    case ZE_XP_INDEX_COUNT:
        Put(value, static_cast<uint32_t>(list->GetIndexList().GetCount()));
        break;
    case ZE_XP_INDEX_ENTRIES: {
        const CZeAviIndexListChunk& index = list->GetIndexList();
        const uint64_t room = value->cbValue / sizeof(ZeXpIndexEntry);
        const uint64_t left = index.GetCount() - item;
        items = static_cast<uint32_t>(room < left ? room : left);
        auto* out = static_cast<ZeXpIndexEntry*>(value->pValue);
        for (uint32_t i = 0; i < items; ++i) {
            const CZeAviIndexChunk& entry = index.At(item + i);
            ZeXpIndexEntry record{};
            record.ckid = entry.GetChunkId();
            record.dwFlags = entry.GetFlags();
            record.qwOffset = entry.GetOffset();
            record.dwSize = entry.GetSize();
            record.qwPosition = entry.GetPosition();
            std::memcpy(out + i, &record, sizeof(record));
        }
        break;
    }
    case ZE_XP_STREAM_ROLES: {
        const CZeAviFile& file = source.File();
        const ZeXpStreamRoles roles{static_cast<int32_t>(file.GetFirstVideoStream()),
                                    static_cast<int32_t>(file.GetSecondVideoStream()),
                                    static_cast<int32_t>(file.GetFirstAudioStream()), file.GetSkippedStreams()};
        Put(value, roles);
        break;
    }
    case ZE_XP_FRAME_COUNT:
        Put(value, static_cast<uint32_t>(source.VideoFrameCount()));
        break;
    case ZE_XP_DV_VIDEO_PARAMS: {
        const ZeDVVideoParams& p = source.DVVideoParams();
        ZeXpDVVideoParams record{};
        record.sixtyFields = p.sixtyFields;
        record.displayCode = p.displayCode;
        record.interlaceCode = p.interlaceCode;
        record.compressionCode = p.compressionCode;
        record.recordingStartCode = p.recordingStartCode;
        record.aspectRatio = p.aspectRatio;
        std::memcpy(record.recordingDateTime, p.recordingDateTime, sizeof(record.recordingDateTime));
        record.recordingDateTime[sizeof(record.recordingDateTime) - 1] = '\0';
        Put(value, record);
        break;
    }
    case ZE_XP_DV_AUDIO_PARAMS: {
        const ZeDVAudioParams& p = source.DVAudioParams();
        ZeXpDVAudioParams record{};
        record.sampleRate = p.sampleRate;
        record.bitsPerSample = p.bitsPerSample;
        record.audioModeCode = p.audioModeCode;
        record.firstChannel = p.firstChannel;
        record.secondChannel = p.secondChannel;
        Put(value, record);
        break;
    }
    case ZE_XP_DV_RECORDING_TEXT:
    case ZE_XP_DV_TIMESTAMP: {
        const uint8_t* frame = nullptr;
        uint64_t frameBytes = 0;
        const HRESULT hr = ExchangeFrame(item, &frame, &frameBytes);
        if (FAILED(hr)) return hr;
        if (paramId == ZE_XP_DV_RECORDING_TEXT) {
            char text[ZeDV::kDateTimeTextSize] = {};
            // A frame without date and time packs has no text: E_ABORT, as for camera values.
            if (!ZeDV::BuildRecordingDateTimeText(frame, frameBytes, text)) return E_ABORT;
            PutText(value, text);
        } else {
            ZeDV::ZeDVTimestamp stamp{};
            const HRESULT decoded = ZeDV::DecodeTimestamp(frame, frameBytes, &stamp);
            if (FAILED(decoded)) return decoded;
            const ZeXpDVTimestamp record{stamp.seconds, stamp.minutes, stamp.hours,
                                         stamp.day,     stamp.month,   stamp.year};
            Put(value, record);
        }
        break;
    }
    case ZE_XP_COLOR_FORMAT_COUNT:
        Put(value, kColorFormatCount);
        break;
    case ZE_XP_COLOR_FORMAT_NAME:
        PutText(value, kColorFormats[item].name);
        break;
    case ZE_XP_COLOR_FORMAT_SUBTYPE:
        Put(value, *kColorFormats[item].subtype);
        break;
    case ZE_XP_PREFERRED_COLOR_FORMAT:
        Put(value, m_preferredSubtype);
        break;
    case ZE_XP_YUV_COLOR_FORMAT:
        Put(value, m_yuvSubtype);
        break;
    default:
        return Report(kGet, E_INVALIDARG);
    }
    value->valueType = f.type;
    value->paramId = paramId;
    value->itemCount = items;
    return S_OK;
}

// One camera value of a DV frame through its accessor. The accessor checks the descriptor and reports
// its own failures; a frame without the pack gives E_ABORT with the descriptor zeroed, unreported.
HRESULT CZEAviReader::ExchangeCamera(DWORD row, DWORD frame, ZeExchangeValue* value) {
    const uint8_t* data = nullptr;
    uint64_t bytes = 0;
    const HRESULT read = ExchangeFrame(frame, &data, &bytes);
    if (FAILED(read)) return read;
    ZeDV::CameraValueDescriptor descriptor{value->cbStruct, value->cbValue,   value->valueType,
                                           value->paramId,  value->itemCount, static_cast<uint32_t*>(value->pValue)};
    const HRESULT hr = ZeDV::GetCameraValue(ZeDV::CameraValueAt(row), data, bytes, &descriptor);
    value->cbStruct = descriptor.word0;
    value->cbValue = descriptor.size;
    value->valueType = descriptor.type;
    value->paramId = descriptor.parameterId;
    value->itemCount = SUCCEEDED(hr) ? 1 : descriptor.word4;
    value->pValue = descriptor.result;
    return hr;
}

// The stored bytes of a DV frame for the exchange, kept until another frame is asked for.
HRESULT CZEAviReader::ExchangeFrame(DWORD frame, const uint8_t** data, uint64_t* bytes) {
    CZeReaderSource& source = Src();
    const int32_t largest = source.LargestVideoFrameSize();
    if (largest <= 0) return Report(kGet, E_AVI_NOFRAME);
    if (m_exchangeFrameNumber != frame || m_exchangeFrame.size() != static_cast<size_t>(largest)) {
        m_exchangeFrame.assign(static_cast<size_t>(largest), 0);
        m_exchangeFrameNumber = UINT64_MAX;
        uint64_t bytesRead = 0;
        const HRESULT hr = source.GetFrame(m_exchangeFrame.data(), frame, &bytesRead);
        if (FAILED(hr)) return hr;
        m_exchangeFrameBytes = bytesRead <= m_exchangeFrame.size() ? bytesRead : m_exchangeFrame.size();
        m_exchangeFrameNumber = frame;
    }
    *data = m_exchangeFrame.data();
    *bytes = m_exchangeFrameBytes;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::Set(DWORD paramId, DWORD, DWORD, DWORD valueType, DWORD cbValue,
                                            const void* value, DWORD, void*) {
    if (!value) return Report(kSet, E_POINTER);
    return Guarded(kSet, [&] { return ExchangeSet(paramId, valueType, cbValue, value); });
}

HRESULT CZEAviReader::ExchangeSet(DWORD paramId, DWORD valueType, DWORD cbValue, const void* value) {
    switch (paramId) {
    case ZE_XP_FILE_PATH: {
        if (valueType != ZE_XT_TEXT) return Report(kSet, E_INVALIDARG);
        const char* path = static_cast<const char*>(value);
        CZeReaderSource& source = Src();
        // Like the audio reader, an object that already parsed a file keeps serving it.
        if (source.IsParsed()) return S_OK;
        SetErrorContext(path);
        return source.OpenAndParse(path);
    }
    case ZE_XP_PREFERRED_COLOR_FORMAT:
    case ZE_XP_YUV_COLOR_FORMAT: {
        if (valueType != ZE_XT_GUID || cbValue != sizeof(GUID)) return Report(kSet, E_INVALIDARG);
        GUID subtype;
        std::memcpy(&subtype, value, sizeof(subtype));
        if (!IsColorFormat(subtype)) return Report(kSet, E_AVI_COLORSPACE);
        (paramId == ZE_XP_PREFERRED_COLOR_FORMAT ? m_preferredSubtype : m_yuvSubtype) = subtype;
        return S_OK;
    }
    default:
        // Everything else is read-only.
        return Report(kSet, E_INVALIDARG);
    }
}
