// CZeFilter: a stream filter for readers of the record tree: it names which stream numbers a
// caller wants (all of them when nothing is selected).
#pragma once

#include <cstdint>
#include <vector>

class CZeFilter {
public:
    CZeFilter() = default;
    virtual ~CZeFilter() = default;

    void Select(uint32_t streamNumber);
    void Clear() { m_selected.clear(); }
    // True for every stream while nothing is selected, else only for the selected ones.
    bool Accepts(uint32_t streamNumber) const;

private:
    std::vector<uint32_t> m_selected;
};
