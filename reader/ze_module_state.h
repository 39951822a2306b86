// Module-wide state of the COM server: the module's own handle and the count of live objects, factory
// references and server locks that decides whether the module may be unloaded; and the class
// identifiers the module serves.
#pragma once

#include "platform/win32.h"

// The import module's class id is CLSID_ZEAviReaderModule (reader/api/ze_host_interfaces.h).
// {4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}
inline constexpr CLSID CLSID_ZEDVSourceFilter = {
    0x4b9e6a07, 0xd2c8, 0x4e1f, {0x93, 0xa5, 0x7f, 0x0c, 0x1b, 0x2d, 0x6e, 0x84}};
// {7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}
inline constexpr CLSID CLSID_ZEDVRenderFilter = {
    0x7d3a51c2, 0x9e4b, 0x4f08, {0xa6, 0xd1, 0x2c, 0x5b, 0x8e, 0x90, 0xf1, 0x43}};

// Atomic; raised by the first AddRef of every object and of the class factory and by LockServer(TRUE),
// lowered by the matching last Release and LockServer(FALSE).
void ZeModuleAddRef();
void ZeModuleRelease();
LONG ZeModuleLiveCount();

// The handle the module's entry point was given (null in a program that links the code statically).
HMODULE ZeModuleHandle();
void ZeSetModuleHandle(HMODULE module);
