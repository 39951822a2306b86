// Our parser doing the benchmarked jobs.
#pragma once

#include <cstdint>
#include <string>

// Opens and fully parses the file; returns the index entries of all streams (0 on failure).
uint64_t ZeOpenIndex(const std::string& path);
