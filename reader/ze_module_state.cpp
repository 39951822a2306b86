#include "reader/ze_module_state.h"

namespace {

LONG volatile g_liveCount = 0;
HMODULE g_module = nullptr;

}  // namespace

void ZeModuleAddRef() { InterlockedIncrement(&g_liveCount); }

void ZeModuleRelease() { InterlockedDecrement(&g_liveCount); }

LONG ZeModuleLiveCount() { return g_liveCount; }

HMODULE ZeModuleHandle() { return g_module; }

void ZeSetModuleHandle(HMODULE module) { g_module = module; }
