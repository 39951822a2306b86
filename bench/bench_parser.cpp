#include "bench/bench_parser.h"

#include "avi/ze_avi_file_parser.h"

uint64_t ZeOpenIndex(const std::string& path)
{
    CZeAviFileParser parser;
    if (parser.OpenAVIFile(path.c_str()) < 0 || parser.Parse() < 0)
        return 0;
    uint64_t entries = 0;
    for (size_t i = 0; i < parser.GetStreamCount(); ++i)
        entries += parser.GetStream(static_cast<uint32_t>(i))->GetIndexList().GetCount();
    return entries;
}
