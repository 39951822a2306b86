#include "dv/ze_dv_data_pack.h"

#include <cstring>

void CZeDVDataPack::Assign(const uint8_t* pack) {
    std::memcpy(m_bytes, pack, kSize);
}
