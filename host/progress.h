// A one-line progress bar on standard error, drawn only when standard error is a terminal.
#pragma once

#include <cstdint>
#include <string>

class ProgressBar {
public:
    ProgressBar(std::string label, uint64_t total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Update(uint64_t done);

private:
    std::string m_label;
    uint64_t m_total;
    bool m_enabled;
    int m_lastPercent = -1;
};
