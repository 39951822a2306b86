#include "reader/module/ze_registration_table.h"

namespace {

#define ZE_READER_KEY "CLSID\\{c3a8e5d1-6f2b-4a97-b0e4-19d7c5a3f260}"
#define ZE_SOURCE_ID "{4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}"
#define ZE_RENDER_ID "{7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}"
// DirectShow's legacy filter category; the filters listed under it are found by filter enumeration.
#define ZE_CATEGORY_KEY "CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}"

const char* const kModulePath = nullptr;

}  // namespace

// The import module has no ThreadingModel; the filters have "Both".
const ZeRegistrationRow kZeRegistrationRows[] = {
    {ZE_READER_KEY, nullptr, "ORVEN AVI Reader"},
    {ZE_READER_KEY "\\InprocServer32", nullptr, kModulePath},
    {"CLSID\\" ZE_SOURCE_ID, nullptr, "ORVEN DV Source Filter"},
    {"CLSID\\" ZE_SOURCE_ID "\\InprocServer32", nullptr, kModulePath},
    {"CLSID\\" ZE_SOURCE_ID "\\InprocServer32", "ThreadingModel", "Both"},
    {ZE_CATEGORY_KEY, nullptr, "0"},
    {ZE_CATEGORY_KEY "\\Instance", nullptr, "0"},
    {ZE_CATEGORY_KEY "\\Instance\\" ZE_SOURCE_ID, nullptr, "0"},
    {ZE_CATEGORY_KEY "\\Instance\\" ZE_SOURCE_ID, "CLSID", ZE_SOURCE_ID},
    {ZE_CATEGORY_KEY "\\Instance\\" ZE_SOURCE_ID, "FriendlyName", "ORVEN DV Source Filter"},
    {"CLSID\\" ZE_RENDER_ID, nullptr, "ORVEN DV Render Filter"},
    {"CLSID\\" ZE_RENDER_ID "\\InprocServer32", nullptr, kModulePath},
    {"CLSID\\" ZE_RENDER_ID "\\InprocServer32", "ThreadingModel", "Both"},
    {ZE_CATEGORY_KEY "\\Instance\\" ZE_RENDER_ID, nullptr, "0"},
    {ZE_CATEGORY_KEY "\\Instance\\" ZE_RENDER_ID, "CLSID", ZE_RENDER_ID},
    {ZE_CATEGORY_KEY "\\Instance\\" ZE_RENDER_ID, "FriendlyName", "ORVEN DV Render Filter"},
};

const size_t kZeRegistrationRowCount = sizeof kZeRegistrationRows / sizeof kZeRegistrationRows[0];
