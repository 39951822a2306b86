#include "tests/dshow/decoders/decoder_test_clips.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <unistd.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <mutex>

#include "tests/fixtures/ze_ffmpeg_material.h"

namespace dectest {
namespace {

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

bool ReadClip(const std::string& path, Clip* clip)
{
    AVFormatContext* raw = nullptr;
    if (avformat_open_input(&raw, path.c_str(), nullptr, nullptr) < 0)
        return false;
    std::unique_ptr<AVFormatContext, InputCloser> input(raw);
    if (avformat_find_stream_info(input.get(), nullptr) < 0)
        return false;
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0)
        return false;
    const AVStream* stream = input->streams[index];
    const AVCodecParameters* par = stream->codecpar;
    clip->header.biSize = sizeof(BITMAPINFOHEADER) + par->extradata_size;
    clip->header.biWidth = par->width;
    clip->header.biHeight = par->height;
    clip->header.biPlanes = 1;
    clip->header.biBitCount = static_cast<WORD>(par->bits_per_coded_sample);
    clip->header.biCompression = par->codec_tag;
    clip->extra.assign(par->extradata, par->extradata + par->extradata_size);
    clip->frameDuration = av_rescale_q(1, av_inv_q(stream->avg_frame_rate), AVRational{1, 10000000});

    std::unique_ptr<AVPacket, PacketFree> packet(av_packet_alloc());
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (packet->stream_index == index) {
            ClipPacket p;
            p.bytes.assign(packet->data, packet->data + packet->size);
            p.key = (packet->flags & AV_PKT_FLAG_KEY) != 0;
            p.start = static_cast<int64_t>(clip->packets.size()) * clip->frameDuration;
            p.stop = p.start + clip->frameDuration;
            clip->packets.push_back(std::move(p));
        }
        av_packet_unref(packet.get());
    }
    return !clip->packets.empty();
}

std::vector<uint8_t> ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string SafeName(std::string text)
{
    for (char& c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return text;
}

}  // namespace

const Clip* LoadClip(const std::string& material, std::string* whyNot)
{
    static std::mutex lock;
    static std::map<std::string, std::unique_ptr<Clip>> clips;
    std::lock_guard<std::mutex> guard(lock);
    auto found = clips.find(material);
    if (found != clips.end())
        return found->second.get();
    const std::string path = zetest::MaterialPath(material, whyNot);
    if (path.empty())
        return nullptr;
    auto clip = std::make_unique<Clip>();
    if (!ReadClip(path, clip.get())) {
        if (whyNot)
            *whyNot = "libavformat cannot read the video of " + path;
        return nullptr;
    }
    return (clips[material] = std::move(clip)).get();
}

Pictures FfmpegPictures(const std::string& material, const std::string& pixelFormat, int width, int height,
                        int lowres, const std::string& filter)
{
    Pictures out;
    out.width = width;
    out.height = height;
    const size_t bits = pixelFormat == "bgr24" ? 24 : pixelFormat == "bgra" ? 32 : 16;
    out.pictureBytes = static_cast<size_t>(width) * height * bits / 8;
    std::string whyNot;
    const std::string path = zetest::MaterialPath(material, &whyNot);
    if (path.empty())
        return out;
    const std::string cached = zetest::CacheDir() + "/decoded_" + material + "_" + pixelFormat + "_lowres" +
                               std::to_string(lowres) + "_" + SafeName(filter) + ".raw";
    std::vector<uint8_t> bytes = ReadFile(cached);
    if (bytes.empty()) {
        // Every decoded picture once, in decoding order of output, with ffmpeg's default scaler.
        const std::string part = cached + ".part" + std::to_string(::getpid());
        std::string cmd = "ffmpeg -nostdin -hide_banner -loglevel error -y ";
        if (lowres)
            cmd += "-lowres " + std::to_string(lowres) + " ";
        cmd += "-i " + zetest::ShellQuote(path) + " -map 0:v:0 -fps_mode passthrough ";
        if (!filter.empty())
            cmd += "-vf " + zetest::ShellQuote(filter) + " ";
        cmd += "-pix_fmt " + pixelFormat + " -f rawvideo " + zetest::ShellQuote(part) + " 2>&1";
        std::string log;
        if (zetest::RunCommand(cmd, &log) != 0 || std::rename(part.c_str(), cached.c_str()) != 0)
            return out;
        bytes = ReadFile(cached);
    }
    for (size_t at = 0; out.pictureBytes && at + out.pictureBytes <= bytes.size(); at += out.pictureBytes)
        out.pictures.emplace_back(bytes.begin() + at, bytes.begin() + at + out.pictureBytes);
    return out;
}

double Psnr(const uint8_t* a, const uint8_t* b, size_t bytes)
{
    double sum = 0;
    for (size_t i = 0; i < bytes; ++i) {
        const double d = double(a[i]) - double(b[i]);
        sum += d * d;
    }
    if (sum == 0)
        return std::numeric_limits<double>::infinity();
    return 10.0 * std::log10(255.0 * 255.0 * double(bytes) / sum);
}

std::vector<uint8_t> TopDownRows(const uint8_t* dib, size_t stride, size_t rowBytes, int height, bool bottomUp)
{
    std::vector<uint8_t> rows(rowBytes * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y) {
        const int from = bottomUp ? height - 1 - y : y;
        std::memcpy(rows.data() + rowBytes * y, dib + stride * from, rowBytes);
    }
    return rows;
}

}  // namespace dectest
