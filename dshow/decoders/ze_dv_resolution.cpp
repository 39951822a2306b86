#include "dshow/decoders/ze_dv_resolution.h"

#include "platform/win32_dshow.h"

namespace zedec {

bool DvResolutionOf(int value, int* resolution)
{
    switch (value) {
    case DVRESOLUTION_FULL:
    case DVRESOLUTION_HALF:
    case DVRESOLUTION_QUARTER:
    case DVRESOLUTION_DC:
        *resolution = value;
        return true;
    case 1:
        *resolution = DVRESOLUTION_FULL;
        return true;
    case 2:
        *resolution = DVRESOLUTION_HALF;
        return true;
    case 4:
        *resolution = DVRESOLUTION_QUARTER;
        return true;
    case 8:
        *resolution = DVRESOLUTION_DC;
        return true;
    default:
        return false;
    }
}

int DvLowres(int resolution)
{
    switch (resolution) {
    case DVRESOLUTION_HALF:
        return 1;
    case DVRESOLUTION_QUARTER:
        return 2;
    case DVRESOLUTION_DC:
        return 3;
    default:
        return 0;
    }
}

void DvPictureSize(int resolution, int fullWidth, int fullHeight, int* width, int* height)
{
    const int shift = DvLowres(resolution);
    *width = fullWidth >> shift;
    *height = fullHeight >> shift;
    if (resolution == DVRESOLUTION_DC)
        *width &= ~7;
}

}  // namespace zedec
