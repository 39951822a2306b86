// CZeAviFileParser: reads a RIFF/AVI file into a CZeAviFile record tree, builds one flat index per
// stream from the file's 'indx'/'ix##' or 'idx1' indexes, and hands out stored video frames and
// audio bytes.
//
// Every failure is reported once through ReportError with the class name "CZeAviFileParser" and the
// failing method's name, and the reported code is returned.
//
// Principal stream: the first stream list record of the header list (stream number 0 of the
// record tree). It decides whether the legacy 'idx1' index is read (only when its own index is
// still empty after the header list) and is the stream the DV code works on.
//
// Stream numbers: a stream's number is its position in the record tree's stream vector. Streams
// left out of the tree (compressed audio, unknown formats) do not take a number, while chunk
// identifiers in 'idx1' count every 'strl' of the file.
//
// Calls into one parser must be serialised by the owner (the plug-in object holds its lock).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "avi/ze_avi_file.h"
#include "avi/ze_avi_index_records.h"
#include "avi/ze_avi_stream_format.h"
#include "avi/ze_avi_stream_list.h"
#include "avi/ze_osal_file.h"
#include "dv/ze_dv_camera_values.h"
#include "dv/ze_dv_params.h"
#include "dv/ze_dv_rec_datetime.h"
#include "platform/win32.h"

class CZeAviSuperIndex;
class CZeAviBaseIndex;
namespace ZeDV {
class CZeDVAudioStream;
}
namespace ZeAvi {
struct FieldLayout;
}

class CZeAviFileParser {
public:
    // The class name of every report of the parser.
    static constexpr char kClass[] = "CZeAviFileParser";
    static constexpr uint32_t kNoStream = ze_avi_file::kNoStream;
    static constexpr uint64_t kNoEntry = ~static_cast<uint64_t>(0);

    CZeAviFileParser();
    virtual ~CZeAviFileParser();
    CZeAviFileParser(const CZeAviFileParser&) = delete;
    CZeAviFileParser& operator=(const CZeAviFileParser&) = delete;

    // ---- Opening, I/O, validation -------------------------------------------------------------

    // Opens `path` for reading through a mapped view. The same path while open: nothing happens.
    HRESULT OpenAVIFile(const char* path);
    // Absolute 64-bit position, `*method` a SetFilePointer method (callers use FILE_BEGIN).
    HRESULT Seek(uint64_t* position, uint32_t* method);
    // Reads up to `*count` bytes; a short read is not an error here, callers compare `*bytesRead`.
    HRESULT Read(void* buffer, uint64_t* count, uint64_t* bytesRead);
    // 0 for a parsed file with a main header, streams and a usable first stream.
    HRESULT IsValidAVIFile();
    // Quick check of a file's RIFF/AVI signature; always leaves the parser reset unless a full
    // parse already exists (then 0 at once).
    HRESULT Parse(const char* path);
    // Full parse of the open file: header list, indexes, DV set-up, final repairs.
    HRESULT Parse();
    // Closes the file and forgets everything about it.
    void Reset();

    // Walks sibling chunks from `start` for a LIST of type `listType` (4 characters, case ignored).
    HRESULT FindListChunk(uint64_t start, const char* listType, uint64_t* found);
    // Walks sibling chunks from `start` for a chunk `chunkId` (case ignored). Nothing found (a short
    // read ended the walk, or the walk reached `end`) leaves `*found` 0 and is not a failure.
    // `*size` (optional) receives the chunk's size.
    HRESULT FindChunk(uint64_t start, const char* chunkId, uint64_t* found, uint32_t* size = nullptr,
                      uint64_t end = ~static_cast<uint64_t>(0));

    // ---- Frames and audio ----------------------------------------------------------------------

    // Stored bytes of video frame `*frame` into `buffer` (at least GetMaxVideoFrameSize() bytes).
    // Bit 7 of `*flags` selects the second video stream when the file has one. A request up to
    // `*tolerance` frames past the end gets a zeroed frame and `*bytesRead` all ones.
    HRESULT GetFrame(void* buffer, uint64_t* frame, uint64_t* bytesRead, uint8_t* flags, int16_t* tolerance);
    // What remains of audio index entry `*block` after its first `*skip` bytes; returns the bytes
    // read, 0 on failure (reported).
    uint64_t GetOneAudioBlock(void* buffer, uint64_t* block, int32_t* skip);
    // `*count` bytes of the first audio stream from sample frame `*position` (interleaved DV files:
    // taken from the DV frames). What is not read stays zero.
    HRESULT GetSample(uint64_t* position, void* buffer, uint64_t* count);
    // Audio entry holding stream byte `*position` and the offset inside it; kNoEntry when none.
    uint64_t GetAudioIndex(uint64_t* position, uint64_t* inEntry);
    // Forgets the sequential read cursor of GetSample.
    void PrepareAudioRead();
    // Data position, size and offset as the index gave it (0 marks a drop frame) of entry `entry`
    // of stream `stream`; all ones past the index. Any output may be null.
    void LookupEntry(uint32_t stream, uint64_t entry, uint64_t* position, uint32_t* size,
                     uint64_t* indexOffset = nullptr) const;

    // Size of the last frame read by any parser of the process (shared on purpose).
    static uint64_t GetLastFrameSize();

    // ---- Accessors -------------------------------------------------------------------------------

    bool IsOpen() const { return m_file.IsOpen(); }
    bool IsParsed() const { return m_parsed != 0; }
    const std::string& GetFileName() const { return m_aviFile.GetFileName(); }
    uint64_t GetFileSize() const { return m_file.GetFileSize(); }

    // The record tree and its main header.
    const CZeAviFile& GetAviFile() const { return m_aviFile; }
    const CZeAviHeader& GetMainHeader() const { return m_aviFile.GetHeader(); }
    size_t GetStreamCount() const { return m_aviFile.GetStreams().size(); }
    // Stream list `number`, null when there is none.
    const CZeAviStreamList* GetStream(uint32_t number) const { return m_aviFile.GetStream(number); }
    // First stream list record, null without streams.
    const CZeAviStreamList* GetPrincipalStream() const { return m_aviFile.GetStream(0); }

    // Stream numbers, kNoStream when absent.
    uint32_t GetFirstVideoStreamNumber() const { return m_aviFile.GetFirstVideoStream(); }
    uint32_t GetSecondVideoStreamNumber() const { return m_aviFile.GetSecondVideoStream(); }
    uint32_t GetFirstAudioStreamNumber() const { return m_aviFile.GetFirstAudioStream(); }
    const CZeAviStreamList* GetVideoStream() const { return GetStream(GetFirstVideoStreamNumber()); }
    const CZeAviStreamList* GetAudioStream() const { return GetStream(GetFirstAudioStreamNumber()); }

    // Video stream header and BITMAPINFOHEADER of the first video stream (null when absent; the
    // bitmap header is null for an interleaved DV stream, whose format is a DV info block).
    const CZeAviStreamHeader* GetVideoStreamHeader() const;
    const BITMAPINFOHEADER* GetVideoFormat() const;
    // Audio stream header and WAVEFORMATEX of the first audio stream (null when absent).
    const CZeAviStreamHeader* GetAudioStreamHeader() const;
    const WAVEFORMATEX* GetAudioFormat() const;

    // Index entries of the first video stream (the frames GetFrame serves).
    uint64_t GetVideoFrameCount() const;
    // Largest index entry of the first and second video streams: the frame buffer size GetFrame needs.
    uint32_t GetMaxVideoFrameSize() const;
    // Largest index entry of the first audio stream, at most the file's size: the buffer size
    // GetOneAudioBlock needs.
    uint32_t GetMaxAudioChunkSize() const;
    // The video compression: biCompression of the first video stream, or its fccHandler when it has
    // no bitmap header (interleaved DV). 0 without video.
    uint32_t GetVideoCompression() const;
    // The video compression is "dvsd".
    bool IsDV() const;
    // The principal stream is an interleaved DV ('iavs') stream.
    bool IsInterleavedDV() const;

    // DV parameters decoded from one frame at open time, and the DV frame buffer.
    const ZeDVVideoParams& GetDVVideoParams() const { return m_dvVideo; }
    const ZeDVAudioParams& GetDVAudioParams() const { return m_dvAudio; }
    std::vector<uint8_t>& GetDVFrameBuffer() { return m_dvFrameBuffer; }

    // ---- DV steps (ze_avi_parser_dv.cpp; they decode frames through dv/) ----------------------

    // Video parameters of a "dvsd" file from one frame; run by the full parse.
    HRESULT DecodeDVVideoParams();
    // Audio parameters of an interleaved DV file from one frame; run by the full parse.
    HRESULT DecodeDVAudioParams();
    // The camera value decoders (DecodeDVIris and its siblings, one table row each) on a DV frame in
    // memory: 0 with `result` written; E_POINTER, reported under the row's decoder name, for a null
    // frame or result; E_ABORT, not reported and `result` untouched, when the frame lacks the pack.
    static HRESULT DecodeCameraValue(const ZeDV::CameraValue& value, const uint8_t* frame, size_t frameSize,
                                     uint32_t* result);
    // The camera value accessors (GetIris and its siblings) for the parameter exchange: E_POINTER for
    // a null frame, descriptor or result pointer and E_INVALIDARG for a size word other than 4, both
    // reported under the accessor's name with the descriptor unchanged; a decoder failure zeroes the
    // whole descriptor and is returned; success sets the type and identifier words.
    static HRESULT GetCameraValue(const ZeDV::CameraValue& value, const uint8_t* frame, size_t frameSize,
                                  ZeDV::CameraValueDescriptor* descriptor);
    // The recording time stamp of a DV frame: E_POINTER (reported) for a null frame or result,
    // E_ABORT (not reported, result untouched) when the date or time pack is missing.
    static HRESULT DecodeDVTimestamp(const uint8_t* frame, size_t frameSize, ZeDV::ZeDVTimestamp* result);
    // Adds the PCM audio stream an interleaved DV stream carries; 1 when nothing was built.
    HRESULT CreateIavsAudioStreams();
    // GetSample for interleaved DV files: PCM taken out of the DV frames.
    HRESULT GetSampleFromStream(uint64_t* position, void* buffer, uint64_t* count);
    // Reads the DV format block of an 'iavs' stream's 'strf' chunk: `position` is the first byte
    // of the chunk's data, `size` its declared size. Returns 0, a positive value to leave the
    // stream out, or a failure.
    HRESULT FillInterleavedVideoAudioStreamFormatHeader(uint64_t position, uint32_t size, CZeAviStreamFormat& format);

private:
    // Header list.
    HRESULT ParseHeaderListChunk(uint64_t position);
    HRESULT ParseHeaderChunk(uint64_t position);
    HRESULT ParseStreamListChunk(uint64_t position, uint64_t* next);
    HRESULT ParseStreamHeaderChunk(uint64_t position, CZeAviStreamList& streamList);
    HRESULT ParseStreamFormatChunk(uint64_t position, CZeAviStreamList& streamList);
    HRESULT ParseStreamNameChunk(uint64_t position, CZeAviStreamList& streamList);
    HRESULT FillVideoStreamFormatHeader(uint32_t size, CZeAviStreamFormat& format);
    HRESULT FillAudioStreamFormatHeader(uint32_t size, CZeAviStreamFormat& format);

    // Index building.
    HRESULT BuildLegacyIndex();
    HRESULT ParseStreamIndexChunk(uint64_t position, CZeAviStreamList& streamList);
    HRESULT FillBaseIndex(uint64_t* position, CZeAviBaseIndex& index);
    HRESULT FillSuperIndex(CZeAviIndexListChunk& indexList, CZeAviSuperIndex& entry, uint32_t entryCount);
    HRESULT FillSuperIndex(CZeAviIndexChunk& entry, uint64_t baseOffset, const uint8_t** cursor);
    HRESULT FindFirstVideoChunk(uint64_t start, uint64_t* dataPosition);
    HRESULT ParseStreamIdx1Chunk(uint64_t position, uint64_t* moviBase, uint64_t firstVideoData);

    // Frame `number` of the first video stream into `*frame` (sized by the caller) for a DV
    // parameter step; `*got` the bytes it holds.
    HRESULT ReadParameterFrame(uint64_t number, std::vector<uint8_t>* frame, size_t* got);

    // Final repairs of the parse (frame counts, audio length).
    HRESULT FinishStreams();

    // Reads exactly `count` bytes at the current position; a short read is reported as E_AVI_READ
    // under `method`. Fixed-size chunk bodies are read this way in one piece and decoded at their
    // offsets (ze_avi_le.h).
    HRESULT ReadExact(void* buffer, uint64_t count, const char* method);
    // Reads a body of the fixed fields `layout` names (ze_avi_chunk_layouts.h) in one piece; a body
    // cut off by the end of the file fails as in ShortBody.
    HRESULT ReadBody(void* buffer, const ZeAvi::FieldLayout& layout, const char* method);
    // The failure of a body of `layout` that a read cut off after `got` bytes, as reading its fields
    // one after another meets it: a cut inside a field is a short read, E_AVI_READ under `method`;
    // a cut between two fields leaves the next field's read at the end of the file, which the file
    // layer refuses when the file's size is a multiple of its mapping granularity (reported by Read).
    HRESULT ShortBody(uint64_t got, const ZeAvi::FieldLayout& layout, const char* method);
    // Repeats, at the end of the file where a short read left it, the read of a field that would
    // follow there; returns Read's result.
    HRESULT ReadOnAtEnd();
    // Seeks to the absolute `position`; a position the file layer cannot reach is reported as
    // E_AVI_SEEK under `method`. The parse steps' own seeks report under "Seek", the public entry
    // they stand for; sample access reports under the access method.
    HRESULT SeekTo(uint64_t position, const char* method = "Seek");
    // Opens the chunk at `position`: seeks there, reads its FOURCC (which must be `fourcc`, case
    // ignored), then its size, which must not be 0. Every mismatch or short read is E_AVI_READ under
    // `method`. `record`, when given, takes `fourcc` as its ID as soon as the FOURCC matched;
    // `idRead` receives the FOURCC as the file spells it.
    HRESULT OpenChunk(uint64_t position, uint32_t fourcc, const char* method, uint32_t* size,
                      CZeAviFormTypes* record = nullptr, uint32_t* idRead = nullptr);
    // OpenChunk for a LIST whose list type must be `listType`.
    HRESULT OpenList(uint64_t position, uint32_t listType, const char* method, uint32_t* size,
                     CZeAviFormTypes* sizeRecord = nullptr);
    // The file layer's read at the current position; a read of one byte or more that starts past
    // the end of the file fails here with E_FAIL (as the layer's own range check would) before the
    // layer adds offset and count.
    int32_t FileRead(void* buffer, uint64_t* count, uint64_t* bytesRead);
    // Bytes of the file from `position` to its end (0 past the end).
    uint64_t BytesFrom(uint64_t position) const;
    // End offsets (stream bytes) of the first audio stream's entries, built on first need.
    void BuildAudioEntryEnds();

    ZeOSAL::CZeFile m_file;
    CZeAviFile m_aviFile;
    uint8_t m_parsed = 0;

    // Per-file state, cleared by Reset.
    struct AudioCursor {
        bool valid = false;
        uint64_t streamPosition = 0;  // stream byte position the last GetSample ended at
        uint64_t entry = 0;           // index entry reached
        uint64_t inEntry = 0;         // offset inside that entry
    };
    AudioCursor m_audioCursor;
    // Standard index entries read so far by the running parse, over all streams.
    uint64_t m_indexEntriesRead = 0;
    // End offset (in stream bytes) of every entry of the first audio stream, for GetAudioIndex.
    std::vector<uint64_t> m_audioEntryEnds;

    // Drop-frame cache of the two video streams in use (first, second); all ones after Reset.
    struct FrameCache {
        uint64_t lastFrameAsked = ~static_cast<uint64_t>(0);
        uint64_t lastReadPosition = ~static_cast<uint64_t>(0);
        uint32_t lastReadSize = 0xFFFFFFFFu;
    };
    FrameCache m_frameCache[2];

    static uint64_t s_lastFrameSize;

    // DV state, filled by the DV steps.
    ZeDVVideoParams m_dvVideo;
    ZeDVAudioParams m_dvAudio;
    std::vector<uint8_t> m_dvFrameBuffer;
    // Reader of the sound an interleaved DV stream carries in its frames; created with that stream.
    std::shared_ptr<ZeDV::CZeDVAudioStream> m_dvAudioStream;
};
