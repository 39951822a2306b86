# ze_stage_headers(<folder> <target>): an imported header-only target whose include directory holds
# only /usr/include/<folder> (linked into the build folder), so the cross compiler sees that library's
# headers and none of the build machine's other headers.
function(ze_stage_headers folder target)
  set(_stage ${CMAKE_BINARY_DIR}/ze-host-headers/${folder})
  file(MAKE_DIRECTORY ${_stage})
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing: install its Debian -dev package")
  endif()
  if(NOT EXISTS ${_stage}/${folder})
    file(CREATE_LINK /usr/include/${folder} ${_stage}/${folder} SYMBOLIC)
  endif()
  add_library(${target} INTERFACE IMPORTED)
  set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${_stage})
endfunction()
