// The registry file on disk: where it lives, reading it, and changing it safely while other threads
// and processes do the same.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/posix/registry_tree.h"

namespace ze_posix {

// ZE_REGISTRY_FILE, else $XDG_DATA_HOME/zeavireader/registry.reg, else
// $HOME/.local/share/zeavireader/registry.reg. Read on every call, so the store can be moved at run time.
std::string RegistryFilePath();

// The current store as a shared tree that nobody changes (a missing file is an empty store; the hives
// and the classes root always exist). Readers take no lock: writers publish by rename, so a reader sees
// one whole version. The parsed tree is kept per process and parsed again only when the file is
// replaced, so lookups cost a stat, not a parse. Returns a Win32 error number.
DWORD ReadRegistry(std::shared_ptr<const RegKey>& root);

// Applies `change` to the newest store while holding an exclusive flock on "<file>.lock". When the change
// reports that it modified the tree, the result is written to a temporary file beside the store and renamed
// over it, and becomes the kept tree of readers. The change's own error number is returned when it is not ERROR_SUCCESS (nothing is written then).
DWORD UpdateRegistry(const std::function<DWORD(RegKey& root, bool& modified)>& change);

}  // namespace ze_posix
