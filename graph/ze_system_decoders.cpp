#include "graph/ze_system_decoders.h"

#ifndef _WIN32
#include "dshow/decoders/ze_dshow_decoders.h"
#endif

void ZeEnsureSystemDecoders()
{
#ifndef _WIN32
    ZeDShowDecodersInstall();  // idempotent: only the first call installs
#endif
}
