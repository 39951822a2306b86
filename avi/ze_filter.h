// CZeFilter: a stream filter for readers of the record tree: it names which stream numbers a
// caller wants (all of them when nothing is selected).
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

class CZeFilter {
public:
    CZeFilter() = default;
    virtual ~CZeFilter() = default;

    void Select(uint32_t streamNumber) {
        if (!IsSelected(streamNumber)) m_selected.push_back(streamNumber);
    }
    void Clear() { m_selected.clear(); }
    // True for every stream while nothing is selected, else only for the selected ones.
    bool Accepts(uint32_t streamNumber) const { return m_selected.empty() || IsSelected(streamNumber); }

private:
    bool IsSelected(uint32_t streamNumber) const {
        return std::find(m_selected.begin(), m_selected.end(), streamNumber) != m_selected.end();
    }

    std::vector<uint32_t> m_selected;
};
