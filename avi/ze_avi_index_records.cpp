#include "avi/ze_avi_index_records.h"

HRESULT CZeAviIndexChunk::Reset() {
    static_cast<ze_avi_indexchunk&>(*this) = ze_avi_indexchunk();
    return S_OK;
}

CZeAviIndexListChunk::~CZeAviIndexListChunk() { CZeAviIndexListChunk::Reset(); }

HRESULT CZeAviIndexListChunk::Reset() {
    std::vector<CZeAviIndexChunk>().swap(m_entries);
    return CZeAviFormTypes::Reset();
}

std::string CZeAviIndexListChunk::Dump() const { return "### CZeAviIndexListChunk ###\n" + DumpBase(); }

HRESULT CZeAviBaseIndex::Reset() {
    static_cast<ze_avi_baseindex&>(*this) = ze_avi_baseindex();
    return S_OK;
}

CZeAviSuperIndex::~CZeAviSuperIndex() { CZeAviSuperIndex::Reset(); }

HRESULT CZeAviSuperIndex::Reset() {
    CZeAviBaseIndex::Reset();
    m_entries.clear();
    return S_OK;
}
