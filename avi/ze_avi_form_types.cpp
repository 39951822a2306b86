#include "avi/ze_avi_form_types.h"

#include <cstdio>

namespace ZeAvi {

std::string DumpLine(const char* format, uint32_t value) {
    char buffer[128];
    std::snprintf(buffer, sizeof(buffer), format, static_cast<long>(static_cast<int32_t>(value)));
    return std::string(buffer) + "\n";
}

}  // namespace ZeAvi

HRESULT CZeAviFormTypes::Reset() {
    dwOffset = 0;
    dwSize = 0;
    dwID = 0;
    return S_OK;
}

std::string CZeAviFormTypes::DumpBase() const {
    return "### CZeAviFormTypes ###\n" + ZeAvi::DumpLine("dwOffset : %ld", dwOffset) +
           ZeAvi::DumpLine("dwSize : %ld", dwSize) + ZeAvi::DumpLine("dwID : %ld", dwID);
}

std::string CZeAviFormTypes::Dump() const { return DumpBase(); }

std::ostream& CZeAviFormTypes::Print(std::ostream& out) const { return out << Dump(); }
