# 32-bit Windows with mingw-w64: cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-i686-w64-mingw32.cmake
set(CMAKE_SYSTEM_PROCESSOR i686)
set(ZE_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
# The exports file names the stdcall entry points undecorated (DllGetClassObject, not
# _DllGetClassObject@12); the linker binds them to the decorated symbols without a warning for each.
string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,--enable-stdcall-fixup")
