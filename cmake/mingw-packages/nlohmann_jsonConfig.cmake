# nlohmann/json (header-only, nlohmann-json3-dev) for the mingw-w64 cross builds.
include(${CMAKE_CURRENT_LIST_DIR}/stage-headers.cmake)
if(NOT TARGET nlohmann_json::nlohmann_json)
  ze_stage_headers(nlohmann nlohmann_json::nlohmann_json)
endif()
set(nlohmann_json_FOUND TRUE)
