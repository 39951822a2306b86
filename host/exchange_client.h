// Typed reads through the module's parameter exchange (reader/api/ze_exchange.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/host_module.h"

class ExchangeClient {
public:
    explicit ExchangeClient(ModuleSession& session) : m_session(session) {}

    // Opens the file for inspection (the exchange's file parameter).
    void Open(const std::string& path);

    struct Facts {
        bool available = false;
        uint32_t type = 0;
        uint32_t bytes = 0;
        uint32_t count = 0;
        std::string name;
    };
    Facts Check(uint32_t id, uint32_t stream = 0, uint32_t item = 0);

    uint32_t GetU32(uint32_t id, uint32_t stream = 0, uint32_t item = 0);
    std::string GetText(uint32_t id, uint32_t stream = 0, uint32_t item = 0);
    std::vector<uint8_t> GetBytes(uint32_t id, uint32_t stream = 0, uint32_t item = 0);
    GUID GetGuid(uint32_t id, uint32_t stream = 0, uint32_t item = 0);
    template <class Record>
    Record GetRecord(uint32_t id, uint32_t stream = 0, uint32_t item = 0) {
        Record record{};
        Get(id, stream, item, &record, sizeof(record), "reading " + Check(id, stream, item).name);
        return record;
    }
    // Every index entry of a stream, read in batches.
    std::vector<ZeXpIndexEntry> GetIndex(uint32_t stream);

    // A camera value of a frame: false when the frame carries no such pack (E_ABORT); *id receives the
    // accessor's parameter identifier.
    bool GetCamera(uint32_t row, uint32_t frame, uint32_t* value, uint32_t* id);
    // The recording date text or time stamp of a frame: false when the frame carries no date.
    bool GetRecordingText(uint32_t frame, std::string* text);
    bool GetTimestamp(uint32_t frame, ZeXpDVTimestamp* stamp);

private:
    // Returns the exchange's answer; throws for failures other than `tolerated`.
    HRESULT Get(uint32_t id, uint32_t stream, uint32_t item, void* buffer, uint32_t bytes, const std::string& what,
                ZeExchangeValue* descriptor = nullptr, HRESULT tolerated = S_OK);

    ModuleSession& m_session;
};

// A FOURCC as text: its four characters when printable, "" for 0, else 0x%08X.
std::string FourCCText(uint32_t fourcc);
// {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}
std::string GuidText(const GUID& guid);
