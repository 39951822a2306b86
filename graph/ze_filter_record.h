// CZeFilter: what the filter mapper knows about one decoder, as the decoder list keeps it: the
// friendly name, the class identifier and the raw "FilterData" bytes of its registration (stored
// as the mapper wrote them, never parsed here).
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/win32.h"

class CZeFilter {
public:
    typedef std::basic_string<WCHAR> Name;

    CZeFilter() = default;

    const Name& FriendlyName() const { return m_name; }
    void SetFriendlyName(const WCHAR* text) { m_name = text != nullptr ? Name(text) : Name(); }

    const CLSID& ClassId() const { return m_clsid; }
    void SetClassId(REFCLSID clsid) { m_clsid = clsid; }

    const std::vector<BYTE>& FilterData() const { return m_filterData; }
    void SetFilterData(std::vector<BYTE> data) { m_filterData = std::move(data); }

private:
    Name m_name;
    CLSID m_clsid{};
    std::vector<BYTE> m_filterData;
};

typedef std::vector<CZeFilter> CZeFilterList;
