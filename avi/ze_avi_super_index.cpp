#include "avi/ze_avi_super_index.h"

CZeAviSuperIndex::~CZeAviSuperIndex() { CZeAviSuperIndex::Reset(); }

HRESULT CZeAviSuperIndex::Reset() {
    CZeAviBaseIndex::Reset();
    m_entries.clear();
    return S_OK;
}
