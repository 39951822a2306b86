#include "avi/ze_avi_base_index.h"

HRESULT CZeAviBaseIndex::Reset() {
    static_cast<ze_avi_baseindex&>(*this) = ze_avi_baseindex();
    return S_OK;
}
