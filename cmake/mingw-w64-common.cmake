# Shared by both mingw-w64 toolchain files: the caller sets ZE_MINGW_TRIPLE first.
set(CMAKE_SYSTEM_NAME Windows)

# The posix thread model: std::thread and std::mutex exist (the win32 model has neither).
set(CMAKE_C_COMPILER ${ZE_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZE_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${ZE_MINGW_TRIPLE}-windres)

# The target's own headers and libraries only; programs (cmake, the shell) come from the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${ZE_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# libgcc, libstdc++ and winpthread linked in, so the DLL and the executables need no mingw DLL beside
# them: they import only system DLLs.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

# Header-only libraries of the build machine (CLI11, nlohmann/json) through packages of our own: the
# Debian packages' own configurations would put /usr/include, with the build machine's C library
# headers, on the cross compiler's include path.
set(CLI11_DIR ${CMAKE_CURRENT_LIST_DIR}/mingw-packages CACHE PATH "CLI11 for the cross build")
set(nlohmann_json_DIR ${CMAKE_CURRENT_LIST_DIR}/mingw-packages CACHE PATH "nlohmann/json for the cross build")
