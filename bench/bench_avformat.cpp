#include "bench/bench_avformat.h"

#include <stdexcept>

extern "C" {
#include <libavformat/avformat.h>
}

namespace {

// Owns an opened AVFormatContext.
class AvInput {
public:
    explicit AvInput(const std::string& path)
    {
        av_log_set_level(AV_LOG_ERROR);
        if (avformat_open_input(&m_ctx, path.c_str(), nullptr, nullptr) < 0)
            throw std::runtime_error("libavformat cannot open " + path);
    }
    ~AvInput() { avformat_close_input(&m_ctx); }
    AvInput(const AvInput&) = delete;
    AvInput& operator=(const AvInput&) = delete;
    AVFormatContext* get() const { return m_ctx; }

private:
    AVFormatContext* m_ctx = nullptr;
};

}  // namespace

int64_t AvformatOpenIndex(const std::string& path)
{
    AvInput in(path);
    int64_t entries = 0;
    for (unsigned i = 0; i < in.get()->nb_streams; ++i)
        entries += avformat_index_get_entries_count(in.get()->streams[i]);
    return entries;
}

uint64_t AvformatReadAll(const std::string& path, bool video)
{
    AvInput in(path);
    const AVMediaType wanted = video ? AVMEDIA_TYPE_VIDEO : AVMEDIA_TYPE_AUDIO;
    for (unsigned i = 0; i < in.get()->nb_streams; ++i)
        if (in.get()->streams[i]->codecpar->codec_type != wanted)
            in.get()->streams[i]->discard = AVDISCARD_ALL;
    AVPacket* packet = av_packet_alloc();
    uint64_t bytes = 0;
    while (av_read_frame(in.get(), packet) >= 0) {
        if (in.get()->streams[packet->stream_index]->codecpar->codec_type == wanted)
            bytes += static_cast<uint64_t>(packet->size);
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    return bytes;
}
