// Per-file state the DV code keeps inside the parser: the reader of the sound that an interleaved
// DV stream carries in its frames.
#pragma once

#include "dv/ze_dv_audio_stream.h"

struct ZeDVStreamState {
    ZeDV::CZeDVAudioStream audio;
};
