// The system decoders of the Linux DirectShow runtime: libavcodec behind the class identifiers and
// names of the decoders a Windows installation has (DV Video Decoder, MJPEG Decompressor, the
// MPEG-4 part 2 decoders under the 'divx' and 'xvid' FOURCC GUIDs) and one decoder per further
// codec that libavformat's RIFF table knows.
#pragma once

// Installs the DirectShow runtime, then makes every decoder of the table a built-in COM class
// and registers it with the filter mapper (merit, pins and media types), so that CoCreateInstance,
// EnumMatchingFilters and intelligent connect find them. Idempotent and thread-safe.
void ZeDShowDecodersInstall();

// Makes every decoder of the table a built-in COM class, so CoCreateInstance creates it by class
// identifier, without touching the registry (the mapper does not see them until
// ZeDShowDecodersInstall). Idempotent and thread-safe; the install does this too.
void ZeDShowDecodersRegisterClasses();
