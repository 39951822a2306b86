#include "host/exchange_client.h"

#include <cctype>
#include <cstdio>

void ExchangeClient::Open(const std::string& path) {
    const HRESULT hr = m_session.Exchange()->Set(ZE_XP_FILE_PATH, 0, 0, ZE_XT_TEXT,
                                                 static_cast<DWORD>(path.size() + 1), path.c_str(), 0, nullptr);
    m_session.Check(hr, "opening " + path);
}

ExchangeClient::Facts ExchangeClient::Check(uint32_t id, uint32_t stream, uint32_t item) {
    Facts f;
    DWORD available = 0, type = 0, bytes = 0, count = 0;
    char* name = nullptr;
    const HRESULT hr = m_session.Exchange()->Check(id, stream, item, &available, &type, &bytes, &count, &name, nullptr);
    m_session.Check(hr, "asking the module about parameter " + std::to_string(id));
    f.available = available != 0;
    f.type = type;
    f.bytes = bytes;
    f.count = count;
    if (name) {
        f.name = name;
        CoTaskMemFree(name);
    }
    return f;
}

HRESULT ExchangeClient::Get(uint32_t id, uint32_t stream, uint32_t item, void* buffer, uint32_t bytes,
                            const std::string& what, ZeExchangeValue* descriptor, HRESULT tolerated) {
    ZeExchangeValue local{};
    ZeExchangeValue& value = descriptor ? *descriptor : local;
    value.cbStruct = sizeof(ZeExchangeValue);
    value.cbValue = bytes;
    value.pValue = buffer;
    const HRESULT hr = m_session.Exchange()->Get(id, stream, item, &value);
    if (hr != tolerated) m_session.Check(hr, what);
    return hr;
}

uint32_t ExchangeClient::GetU32(uint32_t id, uint32_t stream, uint32_t item) { return GetRecord<uint32_t>(id, stream, item); }

GUID ExchangeClient::GetGuid(uint32_t id, uint32_t stream, uint32_t item) { return GetRecord<GUID>(id, stream, item); }

std::string ExchangeClient::GetText(uint32_t id, uint32_t stream, uint32_t item) {
    const Facts f = Check(id, stream, item);
    std::vector<char> text(f.bytes + 1, '\0');
    Get(id, stream, item, text.data(), f.bytes, "reading " + f.name);
    return std::string(text.data());
}

std::vector<uint8_t> ExchangeClient::GetBytes(uint32_t id, uint32_t stream, uint32_t item) {
    const Facts f = Check(id, stream, item);
    std::vector<uint8_t> bytes(f.bytes);
    if (!bytes.empty()) Get(id, stream, item, bytes.data(), f.bytes, "reading " + f.name);
    return bytes;
}

std::vector<ZeXpIndexEntry> ExchangeClient::GetIndex(uint32_t stream) {
    const uint32_t count = GetU32(ZE_XP_INDEX_COUNT, stream);
    std::vector<ZeXpIndexEntry> entries(count);
    constexpr uint32_t kBatch = 4096;
    for (uint32_t first = 0; first < count;) {
        const uint32_t want = count - first < kBatch ? count - first : kBatch;
        ZeExchangeValue value{};
        Get(ZE_XP_INDEX_ENTRIES, stream, first, &entries[first], want * sizeof(ZeXpIndexEntry),
            "reading the index of stream " + std::to_string(stream), &value);
        if (value.itemCount == 0) throw HostError(E_FAIL, "reading an index: the module returned no entries");
        first += value.itemCount;
    }
    return entries;
}

bool ExchangeClient::GetCamera(uint32_t row, uint32_t frame, uint32_t* value, uint32_t* id) {
    ZeExchangeValue descriptor{};
    const HRESULT hr = Get(ZE_XP_CAMERA_FIRST + row, 0, frame, value, sizeof(uint32_t),
                           "reading camera value " + std::to_string(row) + " of frame " + std::to_string(frame),
                           &descriptor, E_ABORT);
    if (hr == E_ABORT) return false;
    *id = descriptor.paramId;
    return true;
}

bool ExchangeClient::GetRecordingText(uint32_t frame, std::string* text) {
    char buffer[129] = {};
    const HRESULT hr = Get(ZE_XP_DV_RECORDING_TEXT, 0, frame, buffer, 128,
                           "reading the recording date of frame " + std::to_string(frame), nullptr, E_ABORT);
    if (hr == E_ABORT) return false;
    *text = buffer;
    return true;
}

bool ExchangeClient::GetTimestamp(uint32_t frame, ZeXpDVTimestamp* stamp) {
    const HRESULT hr = Get(ZE_XP_DV_TIMESTAMP, 0, frame, stamp, sizeof(*stamp),
                           "reading the time stamp of frame " + std::to_string(frame), nullptr, E_ABORT);
    return hr != E_ABORT;
}

std::string FourCCText(uint32_t fourcc) {
    if (fourcc == 0) return "";
    std::string text;
    for (int i = 0; i < 4; ++i) {
        const unsigned char c = static_cast<unsigned char>(fourcc >> (8 * i));
        if (!std::isprint(c)) {
            char hex[16];
            std::snprintf(hex, sizeof(hex), "0x%08X", fourcc);
            return hex;
        }
        text += static_cast<char>(c);
    }
    return text;
}

std::string GuidText(const GUID& g) {
    char text[40];
    std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<uint32_t>(g.Data1), g.Data2, g.Data3,
                  g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
    return text;
}
