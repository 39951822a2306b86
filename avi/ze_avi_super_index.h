// CZeAviSuperIndex: one entry of an 'indx' super index while the parser reads the 'ix##' chunk it
// points to. It can own a sequence of entry records, which its Reset destroys.
#pragma once

#include <memory>
#include <vector>

#include "avi/ze_avi_base_index.h"

class CZeAviSuperIndex : public CZeAviBaseIndex {
public:
    CZeAviSuperIndex() = default;
    CZeAviSuperIndex(const CZeAviSuperIndex&) = delete;
    CZeAviSuperIndex& operator=(const CZeAviSuperIndex&) = delete;
    ~CZeAviSuperIndex() override;

    // The base fields 0, then every owned entry destroyed.
    HRESULT Reset() override;

    std::vector<std::unique_ptr<CZeAviBaseIndex>>& Entries() { return m_entries; }

private:
    std::vector<std::unique_ptr<CZeAviBaseIndex>> m_entries;
};
