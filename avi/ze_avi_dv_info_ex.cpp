#include "avi/ze_avi_dv_info_ex.h"

HRESULT CZeAviDVInfoEx::Reset() {
    for (uint32_t& word : dwWords) word = 0;
    return S_OK;
}

uint32_t CZeAviDVInfoEx::GetWord(int32_t index) const {
    return (index >= 0 && index < kStoredWords) ? dwWords[index] : 0;
}

void CZeAviDVInfoEx::SetWord(int32_t index, uint32_t value) {
    if (index >= 0 && index < kStoredWords) dwWords[index] = value;
}
