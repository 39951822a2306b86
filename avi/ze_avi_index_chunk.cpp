#include "avi/ze_avi_index_chunk.h"

HRESULT CZeAviIndexChunk::Reset() {
    static_cast<ze_avi_indexchunk&>(*this) = ze_avi_indexchunk();
    return S_OK;
}

void CZeAviIndexChunk::CopyFrom(const CZeAviIndexChunk& other) {
#define ZE_COPY(type, field, name) Set##name(other.Get##name());
    ZE_AVI_INDEXCHUNK_FIELDS(ZE_COPY)
#undef ZE_COPY
}
