# CLI11 (header-only, libcli11-dev) for the mingw-w64 cross builds.
include(${CMAKE_CURRENT_LIST_DIR}/stage-headers.cmake)
if(NOT TARGET CLI11::CLI11)
  ze_stage_headers(CLI CLI11::CLI11)
endif()
set(CLI11_FOUND TRUE)
