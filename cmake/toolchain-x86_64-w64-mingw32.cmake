# 64-bit Windows with mingw-w64: cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-x86_64-w64-mingw32.cmake
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(ZE_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
