// CZeAviHeaderList: files the stream lists of a header list into a CZeAviFile record.
#pragma once

#include "avi/ze_avi_file.h"

class CZeAviHeaderList {
public:
    explicit CZeAviHeaderList(CZeAviFile& file) : m_file(file) {}

    // Appends `streamList` to the file's streams and files its number by format type: 1 (video)
    // and 3 (interleaved DV) among the video streams, 2 (audio) among the audio streams. The first
    // video stream becomes the first video number, the next one the second video number; the first
    // audio stream the first audio number. A list of any other format type is not added; the file
    // only counts one more skipped stream. Returns 0 when added, 1 when left out.
    HRESULT AddStream(const CZeAviStreamList& streamList);
    // The same for a stream list the caller no longer needs: its index moves instead of being copied.
    HRESULT AddStream(CZeAviStreamList&& streamList);

private:
    CZeAviFile& m_file;
};
