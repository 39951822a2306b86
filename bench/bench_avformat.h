// libavformat doing the same jobs as the benchmarked parser calls, for comparison.
#pragma once

#include <cstdint>
#include <string>

// avformat_open_input (which reads the AVI index) and close; returns the index entries it holds.
int64_t AvformatOpenIndex(const std::string& path);
// Opens and reads every packet of the chosen kind ("video" or "audio"), dropping the other kind at
// the demuxer; returns the payload bytes read.
uint64_t AvformatReadAll(const std::string& path, bool video);
