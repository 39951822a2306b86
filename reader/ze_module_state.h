// Module-wide state of the COM server: the module's own handle and the count of live objects, factory
// references and server locks that decides whether the module may be unloaded. The plug-in object and
// the class factory both count themselves here; it depends on nothing else of the module.
#pragma once

#include "platform/win32.h"

// Atomic; raised by the first AddRef of every object and of the class factory and by LockServer(TRUE),
// lowered by the matching last Release and LockServer(FALSE).
void ZeModuleAddRef();
void ZeModuleRelease();
LONG ZeModuleLiveCount();

// The handle the module's entry point was given (null in a program that links the code statically).
HMODULE ZeModuleHandle();
void ZeSetModuleHandle(HMODULE module);
