#include "host/progress.h"

#include <cstdio>
#ifdef _WIN32
#include <io.h>
#define ZE_ISATTY _isatty
#define ZE_STDERR 2
#else
#include <unistd.h>
#define ZE_ISATTY isatty
#define ZE_STDERR STDERR_FILENO
#endif

ProgressBar::ProgressBar(std::string label, uint64_t total)
    : m_label(std::move(label)), m_total(total), m_enabled(ZE_ISATTY(ZE_STDERR) != 0) {}

ProgressBar::~ProgressBar() {
    if (m_enabled && m_lastPercent >= 0) std::fprintf(stderr, "\n");
}

void ProgressBar::Update(uint64_t done) {
    if (!m_enabled || m_total == 0) return;
    const int percent = static_cast<int>(done >= m_total ? 100 : done * 100 / m_total);
    if (percent == m_lastPercent) return;
    m_lastPercent = percent;
    constexpr int kWidth = 40;
    const int filled = percent * kWidth / 100;
    std::fprintf(stderr, "\r%s [%.*s%*s] %3d%%", m_label.c_str(), filled, "########################################",
                 kWidth - filled, "", percent);
    std::fflush(stderr);
}
