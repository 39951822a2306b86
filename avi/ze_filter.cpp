#include "avi/ze_filter.h"

#include <algorithm>

void CZeFilter::Select(uint32_t streamNumber) {
    if (std::find(m_selected.begin(), m_selected.end(), streamNumber) == m_selected.end()) {
        m_selected.push_back(streamNumber);
    }
}

bool CZeFilter::Accepts(uint32_t streamNumber) const {
    return m_selected.empty() || std::find(m_selected.begin(), m_selected.end(), streamNumber) != m_selected.end();
}
