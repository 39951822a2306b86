// IZEClientServerExchange2: the host reads what the module knows about the open file (headers,
// indexes, DV parameters, recording dates and camera values of single frames) and the colour
// formats, and sets the colour format choice. The parameters and records are described in
// reader/api/ze_exchange.h. These methods take no object lock.
//
// Every parameter is one row of kParams: its name, value type, the scope that decides whether it is
// available and how many items there are, the size rule its Get buffer must meet, and its writer.
// Check describes a row; Get checks the same facts and runs the row's writer.
#include <cstring>
#include <functional>
#include <string>

#include "avi/ze_avi_file_parser.h"
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

// One Check or Get: the open file, the arguments, and (for Get) the host's descriptor.
struct Ask {
    CZeReaderSource& source;
    uint32_t id;
    uint32_t stream;
    uint32_t item;
    bool parsed;
    bool streamExists;  // the file is parsed and has stream `stream`
    ZeExchangeValue* value;
    const GUID* preferredSubtype;
    const GUID* yuvSubtype;
    // The stored bytes of DV frame `item`, through the object's frame cache.
    std::function<HRESULT(const uint8_t** data, uint64_t* bytes)> frame;
    uint32_t items = 1;  // items a writer wrote
};

// What decides whether a value exists and how many items it has.
enum class Scope {
    Always,       // colour format settings: 1 item
    File,         // needs a parsed file: 1 item
    Stream,       // needs stream `stream`: one item per stream
    IndexEntry,   // needs entry `item` of stream `stream`: one item per entry
    DV,           // needs a parsed DV file: 1 item
    DVFrame,      // needs frame `item` of a DV file: one item per frame
    CameraFrame,  // as DVFrame, one item per camera row
    ColorFormat,  // needs colour format `item`: one item per format
};

// How the host's buffer size must compare with the value's size.
enum class SizeRule {
    Exactly,
    AtLeast,     // text, byte blocks and index entries
    ByAccessor,  // the camera accessor checks and fills the whole descriptor itself
};

struct Param {
    uint32_t id;
    const char* name;  // null: the name of the camera accessor the identifier selects
    uint32_t type;
    Scope scope;
    SizeRule rule;
    uint32_t (*bytes)(const Ask&);
    HRESULT (*write)(Ask&);
    uint32_t ids = 1;  // consecutive identifiers the row stands for
};

template <uint32_t N>
uint32_t Fixed(const Ask&) {
    return N;
}

uint32_t TextBytes(const std::string& text) { return static_cast<uint32_t>(text.size() + 1); }

uint32_t FormatBytes(const Ask& a) {
    uint32_t bytes = 0;
    if (a.streamExists) a.source.StreamFormat(a.stream, &bytes);
    return bytes;
}

HRESULT PutText(Ask& a, const char* text) {
    std::memcpy(a.value->pValue, text, std::strlen(text) + 1);
    return S_OK;
}

template <class T>
HRESULT Put(Ask& a, const T& data) {
    std::memcpy(a.value->pValue, &data, sizeof(T));
    return S_OK;
}

// As many entries from `item` on as the buffer holds.
HRESULT WriteIndexEntries(Ask& a) {
    const uint64_t room = a.value->cbValue / sizeof(ZeXpIndexEntry);
    const uint64_t left = a.source.IndexCount(a.stream) - a.item;
    a.items = static_cast<uint32_t>(room < left ? room : left);
    auto* out = static_cast<ZeXpIndexEntry*>(a.value->pValue);
    for (uint32_t i = 0; i < a.items; ++i) {
        const ZeXpIndexEntry row = a.source.IndexRow(a.stream, a.item + i);
        std::memcpy(out + i, &row, sizeof(row));
    }
    return S_OK;
}

HRESULT WriteRecordingText(Ask& a) {
    const uint8_t* frame = nullptr;
    uint64_t bytes = 0;
    const HRESULT hr = a.frame(&frame, &bytes);
    if (FAILED(hr)) return hr;
    char text[ZeDV::kDateTimeTextSize] = {};
    // A frame without date and time packs has no text: E_ABORT, as for camera values.
    if (!ZeDV::BuildRecordingDateTimeText(frame, bytes, text)) return E_ABORT;
    return PutText(a, text);
}

HRESULT WriteTimestamp(Ask& a) {
    const uint8_t* frame = nullptr;
    uint64_t bytes = 0;
    const HRESULT hr = a.frame(&frame, &bytes);
    if (FAILED(hr)) return hr;
    ZeDV::ZeDVTimestamp stamp{};
    const HRESULT decoded = CZeAviFileParser::DecodeDVTimestamp(frame, bytes, &stamp);
    if (FAILED(decoded)) return decoded;
    return Put(a, ZeXpDVTimestamp{stamp.seconds, stamp.minutes, stamp.hours, stamp.day, stamp.month, stamp.year});
}

// One camera value of a DV frame through its accessor. The accessor checks the descriptor and reports
// its own failures; a frame without the pack gives E_ABORT with the descriptor zeroed, unreported.
HRESULT WriteCamera(Ask& a) {
    const uint8_t* frame = nullptr;
    uint64_t bytes = 0;
    const HRESULT read = a.frame(&frame, &bytes);
    if (FAILED(read)) return read;
    ZeExchangeValue* value = a.value;
    ZeDV::CameraValueDescriptor descriptor{value->cbStruct, value->cbValue,   value->valueType,
                                           value->paramId,  value->itemCount, static_cast<uint32_t*>(value->pValue)};
    const HRESULT hr =
        CZeAviFileParser::GetCameraValue(ZeDV::CameraValueAt(a.id - ZE_XP_CAMERA_FIRST), frame, bytes,
                                        &descriptor);
    value->cbStruct = descriptor.word0;
    value->cbValue = descriptor.size;
    value->valueType = descriptor.type;
    value->paramId = descriptor.parameterId;
    value->itemCount = SUCCEEDED(hr) ? 1 : descriptor.word4;
    value->pValue = descriptor.result;
    return hr;
}

const Param kParams[] = {
    {ZE_XP_FILE_PATH, "FilePath", ZE_XT_TEXT, Scope::File, SizeRule::AtLeast,
     [](const Ask& a) { return TextBytes(a.source.FileName()); },
     [](Ask& a) { return PutText(a, a.source.FileName().c_str()); }},
    {ZE_XP_STREAM_COUNT, "StreamCount", ZE_XT_UINT32, Scope::File, SizeRule::Exactly, Fixed<4>,
     [](Ask& a) { return Put(a, a.source.StreamCount()); }},
    {ZE_XP_MAIN_HEADER, "MainHeader", ZE_XT_RECORD, Scope::File, SizeRule::Exactly, Fixed<sizeof(ZeXpMainHeader)>,
     [](Ask& a) { return Put(a, a.source.MainHeader()); }},
    {ZE_XP_STREAM_HEADER, "StreamHeader", ZE_XT_RECORD, Scope::Stream, SizeRule::Exactly,
     Fixed<sizeof(ZeXpStreamHeader)>,
     [](Ask& a) { return Put(a, *a.source.StreamHeader(a.stream)); }},
    {ZE_XP_STREAM_FORMAT, "StreamFormat", ZE_XT_BYTES, Scope::Stream, SizeRule::AtLeast, FormatBytes,
     [](Ask& a) {
         uint32_t bytes = 0;
         const void* data = a.source.StreamFormat(a.stream, &bytes);
         std::memcpy(a.value->pValue, data, bytes);
         return S_OK;
     }},
    {ZE_XP_STREAM_FORMAT_TYPE, "StreamFormatType", ZE_XT_UINT32, Scope::Stream, SizeRule::Exactly, Fixed<4>,
     [](Ask& a) { return Put(a, a.source.StreamFormatType(a.stream)); }},
    {ZE_XP_STREAM_NAME, "StreamName", ZE_XT_TEXT, Scope::Stream, SizeRule::AtLeast,
     [](const Ask& a) { return a.streamExists ? TextBytes(a.source.StreamName(a.stream)) : 1u; },
     [](Ask& a) { return PutText(a, a.source.StreamName(a.stream).c_str()); }},
    {ZE_XP_INDEX_COUNT, "IndexCount", ZE_XT_UINT32, Scope::Stream, SizeRule::Exactly, Fixed<4>,
     [](Ask& a) { return Put(a, static_cast<uint32_t>(a.source.IndexCount(a.stream))); }},
    {ZE_XP_INDEX_ENTRIES, "IndexEntries", ZE_XT_RECORD, Scope::IndexEntry, SizeRule::AtLeast,
     Fixed<sizeof(ZeXpIndexEntry)>, WriteIndexEntries},
    {ZE_XP_STREAM_ROLES, "StreamRoles", ZE_XT_RECORD, Scope::File, SizeRule::Exactly, Fixed<sizeof(ZeXpStreamRoles)>,
     [](Ask& a) { return Put(a, a.source.Roles()); }},
    {ZE_XP_FRAME_COUNT, "FrameCount", ZE_XT_UINT32, Scope::File, SizeRule::Exactly, Fixed<4>,
     [](Ask& a) { return Put(a, static_cast<uint32_t>(a.source.VideoFrameCount())); }},
    {ZE_XP_DV_VIDEO_PARAMS, "DVVideoParams", ZE_XT_RECORD, Scope::DV, SizeRule::Exactly,
     Fixed<sizeof(ZeXpDVVideoParams)>,
     [](Ask& a) { return Put(a, a.source.DVVideoParams()); }},
    {ZE_XP_DV_AUDIO_PARAMS, "DVAudioParams", ZE_XT_RECORD, Scope::DV, SizeRule::Exactly,
     Fixed<sizeof(ZeXpDVAudioParams)>,
     [](Ask& a) { return Put(a, a.source.DVAudioParams()); }},
    {ZE_XP_DV_RECORDING_TEXT, "RecordingDateTime", ZE_XT_TEXT, Scope::DVFrame, SizeRule::AtLeast,
     Fixed<ZeDV::kDateTimeTextSize>, WriteRecordingText},
    {ZE_XP_DV_TIMESTAMP, "Timestamp", ZE_XT_RECORD, Scope::DVFrame, SizeRule::Exactly, Fixed<sizeof(ZeXpDVTimestamp)>,
     WriteTimestamp},
    {ZE_XP_COLOR_FORMAT_COUNT, "ColorFormatCount", ZE_XT_UINT32, Scope::Always, SizeRule::Exactly, Fixed<4>,
     [](Ask& a) { return Put(a, kColorFormatCount); }},
    {ZE_XP_COLOR_FORMAT_NAME, "ColorFormatName", ZE_XT_TEXT, Scope::ColorFormat, SizeRule::AtLeast,
     [](const Ask& a) {
         return a.item < kColorFormatCount ? static_cast<uint32_t>(std::strlen(kColorFormats[a.item].name) + 1) : 1u;
     },
     [](Ask& a) { return PutText(a, kColorFormats[a.item].name); }},
    {ZE_XP_COLOR_FORMAT_SUBTYPE, "ColorFormatSubtype", ZE_XT_GUID, Scope::ColorFormat, SizeRule::Exactly,
     Fixed<sizeof(GUID)>, [](Ask& a) { return Put(a, *kColorFormats[a.item].subtype); }},
    {ZE_XP_PREFERRED_COLOR_FORMAT, "PreferredColorFormat", ZE_XT_GUID, Scope::Always, SizeRule::Exactly,
     Fixed<sizeof(GUID)>, [](Ask& a) { return Put(a, *a.preferredSubtype); }},
    {ZE_XP_YUV_COLOR_FORMAT, "YuvColorFormat", ZE_XT_GUID, Scope::Always, SizeRule::Exactly, Fixed<sizeof(GUID)>,
     [](Ask& a) { return Put(a, *a.yuvSubtype); }},
    {ZE_XP_CAMERA_FIRST, nullptr, ZE_XT_UINT32, Scope::CameraFrame, SizeRule::ByAccessor, Fixed<4>, WriteCamera,
     ZE_XP_CAMERA_ROWS},
};

// The row of identifier `id`; null when no row has it (camera rows beyond the accessor table included).
const Param* FindParam(uint32_t id) {
    for (const Param& p : kParams) {
        if (id < p.id || id - p.id >= p.ids) continue;
        if (!p.name && id - p.id >= ZeDV::CameraValueCount()) return nullptr;
        return &p;
    }
    return nullptr;
}

// What a row is for the open file and the asked stream and item.
struct Facts {
    HRESULT state;  // S_OK when Get can answer, else the code Get gives
    uint32_t bytes;
    uint32_t count;
    const char* name;
};

Facts Describe(const Param& p, const Ask& a) {
    const HRESULT fileState = a.parsed ? S_OK : E_AVI_PARSE;
    const HRESULT streamState = !a.parsed ? E_AVI_PARSE : (a.streamExists ? S_OK : E_AVI_STREAMINDEX);
    const HRESULT dvState = !a.parsed ? E_AVI_PARSE : (a.source.IsDvVideo() ? S_OK : E_AVI_NOVALIDFILE);
    const uint32_t streams = a.parsed ? a.source.StreamCount() : 0;
    const uint64_t frames = a.parsed ? a.source.VideoFrameCount() : 0;
    const uint32_t entries = a.streamExists ? static_cast<uint32_t>(a.source.IndexCount(a.stream)) : 0;
    const auto within = [&](HRESULT state, uint64_t count) {
        return state != S_OK ? state : (a.item < count ? S_OK : E_INVALIDARG);
    };

    Facts f{S_OK, p.bytes(a), 1, p.name ? p.name : ZeDV::CameraValueAt(a.id - p.id).name};
    switch (p.scope) {
    case Scope::Always: break;
    case Scope::File: f.state = fileState; break;
    case Scope::Stream: f.state = streamState; f.count = streams; break;
    case Scope::IndexEntry: f.state = within(streamState, entries); f.count = entries; break;
    case Scope::DV: f.state = dvState; break;
    case Scope::DVFrame: f.state = within(dvState, frames); f.count = static_cast<uint32_t>(frames); break;
    case Scope::CameraFrame: f.state = within(dvState, frames); f.count = ZE_XP_CAMERA_ROWS; break;
    case Scope::ColorFormat: f.state = within(S_OK, kColorFormatCount); f.count = kColorFormatCount; break;
    }
    // Only a format block can come out empty: a stream without one has nothing to give.
    if (f.state == S_OK && f.bytes == 0) f.state = E_AVI_VIDEOFORMATHEADER;
    return f;
}

}  // namespace

HRESULT STDMETHODCALLTYPE CZEAviReader::Check(DWORD paramId, DWORD stream, DWORD item, DWORD* available,
                                              DWORD* valueType, DWORD* cbValue, DWORD* count, char** name, void*) {
    return Guarded(kCheck, [&] {
        CZeReaderSource& source = Src();
        const Param* p = FindParam(paramId);
        if (!p) return Report(kCheck, E_INVALIDARG);
        const bool parsed = source.IsParsed();
        const Ask ask{source, paramId, stream, item, parsed, parsed && source.HasStream(stream), nullptr,
                      nullptr, nullptr, nullptr};
        const Facts f = Describe(*p, ask);
        if (available) *available = f.state == S_OK ? 1 : 0;
        if (valueType) *valueType = p->type;
        if (cbValue) *cbValue = f.bytes;
        if (count) *count = f.count;
        if (name) {
            const size_t bytes = std::strlen(f.name) + 1;
            *name = static_cast<char*>(CoTaskMemAlloc(bytes));
            if (!*name) return Report(kCheck, E_OUTOFMEMORY);
            std::memcpy(*name, f.name, bytes);
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
    const Param* p = FindParam(paramId);
    if (!p) return Report(kGet, E_INVALIDARG);
    const bool parsed = source.IsParsed();
    const auto frame = [this, item](const uint8_t** data, uint64_t* bytes) { return ExchangeFrame(item, data, bytes); };
    Ask ask{source, paramId, stream, item, parsed, parsed && source.HasStream(stream), value, &m_preferredSubtype,
            &m_yuvSubtype, frame};
    const Facts f = Describe(*p, ask);
    if (f.state != S_OK) return Report(kGet, f.state);
    if (p->rule == SizeRule::ByAccessor) return p->write(ask);
    if (p->rule == SizeRule::AtLeast ? value->cbValue < f.bytes : value->cbValue != f.bytes)
        return Report(kGet, E_INVALIDARG);
    const HRESULT hr = p->write(ask);
    if (FAILED(hr)) return hr;
    value->valueType = p->type;
    value->paramId = paramId;
    value->itemCount = ask.items;
    return S_OK;
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
