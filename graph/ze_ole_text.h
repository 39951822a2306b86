// Wide COM text from ASCII literals, for property names and filter names.
#pragma once

#include <string>

#include "platform/win32.h"

typedef std::basic_string<OLECHAR> ZeOleText;

inline ZeOleText ZeOle(const char* ascii)
{
    ZeOleText text;
    for (; *ascii != '\0'; ++ascii) text.push_back(static_cast<OLECHAR>(static_cast<unsigned char>(*ascii)));
    return text;
}
