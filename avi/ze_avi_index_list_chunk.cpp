#include "avi/ze_avi_index_list_chunk.h"

CZeAviIndexListChunk::~CZeAviIndexListChunk() { CZeAviIndexListChunk::Reset(); }

HRESULT CZeAviIndexListChunk::Reset() {
    std::vector<CZeAviIndexChunk>().swap(m_entries);
    return CZeAviFormTypes::Reset();
}

std::string CZeAviIndexListChunk::Dump() const { return "### CZeAviIndexListChunk ###\n" + DumpBase(); }
