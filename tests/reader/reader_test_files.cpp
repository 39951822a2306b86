#include "tests/reader/reader_test_files.h"

namespace readertest {

zetest::AviModel VideoAvi(const VideoFile& file) {
    zetest::AviModel plan;
    plan.width = static_cast<uint32_t>(file.width);
    plan.height = static_cast<uint32_t>(file.height);
    plan.streams.push_back(zetest::VideoStream(file.handler, file.width, file.height, file.rate, file.scale));
    if (file.audio) plan.streams.push_back(zetest::PcmStream(2, 44100, 16));
    const auto video = zetest::PatternChunks("00dc", file.frames, file.frameBytes, 1);
    const auto sound = zetest::PatternChunks("01wb", file.frames, file.audioChunkBytes, 7);
    for (size_t i = 0; i < file.frames; ++i) {
        plan.chunks.push_back(video[i]);
        if (i == 0 && !file.firstFrame.empty()) plan.chunks.back().data = file.firstFrame;
        if (file.audio) plan.chunks.push_back(sound[i]);
    }
    return plan;
}

std::vector<uint8_t> DvFrame(uint8_t seed) {
    std::vector<uint8_t> frame(kDvFrameBytes, 0);
    // Header block: DSF set for 625/50. Video blocks get a pattern away from the pack search start.
    frame[3] = 0x80;
    for (size_t i = 12000; i < frame.size(); i += 97) frame[i] = static_cast<uint8_t>(seed + i);
    return frame;
}

void PutPack(std::vector<uint8_t>& frame, size_t offset, uint8_t header, uint8_t pc1, uint8_t pc2, uint8_t pc3,
             uint8_t pc4) {
    frame[offset] = header;
    frame[offset + 1] = pc1;
    frame[offset + 2] = pc2;
    frame[offset + 3] = pc3;
    frame[offset + 4] = pc4;
}

size_t PackSearchOffset(size_t i) { return 5 * (i + i / 15) + 243; }

zetest::AviModel DvAvi(const std::vector<std::vector<uint8_t>>& frames, size_t audioChunkBytes) {
    zetest::AviModel plan;
    plan.width = 720;
    plan.height = 576;
    plan.streams.push_back(zetest::VideoStream("dvsd", 720, 576, 25, 1));
    if (audioChunkBytes) {
        plan.streams.push_back(zetest::PcmStream(2, 48000, 16));
        plan.streams.back().suggestedBufferSize = static_cast<uint32_t>(audioChunkBytes);
    }
    const auto sound = zetest::PatternChunks("01wb", frames.size(), audioChunkBytes ? audioChunkBytes : 4, 3);
    for (size_t i = 0; i < frames.size(); ++i) {
        zetest::ChunkModel chunk;
        chunk.ckid = "00dc";
        chunk.data = frames[i];
        plan.chunks.push_back(chunk);
        if (audioChunkBytes) plan.chunks.push_back(sound[i]);
    }
    return plan;
}

}  // namespace readertest
