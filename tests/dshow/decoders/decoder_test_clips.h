// What the decoder tests feed and compare with: the video packets of an ffmpeg-made clip as
// libavformat reads them, and ffmpeg's own decode of the same clip to raw pictures.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace dectest {

struct ClipPacket {
    std::vector<uint8_t> bytes;
    bool key = false;
    int64_t start = 0;  // 100 ns units: packet index times the frame duration
    int64_t stop = 0;
};

struct Clip {
    BITMAPINFOHEADER header{};   // as stored in the file's stream format
    std::vector<uint8_t> extra;  // the bytes after the BITMAPINFOHEADER
    int64_t frameDuration = 0;   // 100 ns units
    std::vector<ClipPacket> packets;
};

// Loads the first video stream of a material clip (made on first use). Returns null and says
// why when the clip cannot be made on this machine.
const Clip* LoadClip(const std::string& material, std::string* whyNot);

// Pictures of ffmpeg's decode of the clip's first video stream, rows top-down and tightly packed.
struct Pictures {
    int width = 0;
    int height = 0;
    size_t pictureBytes = 0;
    std::vector<std::vector<uint8_t>> pictures;
};

// `pixelFormat` is an ffmpeg pixel format name (bgr24, bgra, yuyv422, uyvy422); lowres and a
// filter chain (e.g. "crop=88:72:0:0", applied after decoding) are optional. The result is cached
// in the test folder.
Pictures FfmpegPictures(const std::string& material, const std::string& pixelFormat, int width, int height,
                        int lowres = 0, const std::string& filter = "");

// Peak signal-to-noise ratio of two equally long byte strings (infinity when equal).
double Psnr(const uint8_t* a, const uint8_t* b, size_t bytes);

// Rewrites a DIB picture (rows of `stride` bytes, bottom-up when asked) as tightly packed top-down
// rows of `rowBytes` bytes, the layout of ffmpeg's raw output.
std::vector<uint8_t> TopDownRows(const uint8_t* dib, size_t stride, size_t rowBytes, int height, bool bottomUp);

}  // namespace dectest
