// The registry's file format: REGEDIT4 text.
//
//   REGEDIT4
//
//   [HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{...}]
//   @="text"                      REG_SZ stored with its terminating zero
//   "Count"=dword:0000002a        REG_DWORD
//   "Blob"=hex:01,02,ff           REG_BINARY
//   "Other"=hex(1):4f,52          any other type or size, byte for byte (here a REG_SZ without zero)
//
// Strings escape backslash and quote. Data that a quoted string cannot carry exactly (no terminating
// zero, inner zeros, line breaks) is written as hex(type) so that every byte survives a round trip.
#pragma once

#include <string>

#include "platform/posix/registry_tree.h"

namespace ze_posix {

// Adds the keys and values of `text` to `root`. Lines that do not parse are skipped, so a damaged
// file loses only what is damaged. Returns the number of skipped lines.
size_t ParseRegText(const std::string& text, RegKey& root);

// The whole tree as REGEDIT4 text; every key below the hives gets its own section.
std::string FormatRegText(const RegKey& root);

}  // namespace ze_posix
