# header_only(NAME HEADER...): a target for header-only libraries of this machine that a cross compiler may use too. Their
# directory holds the machine's own headers as well, so links to them alone are made.
function(header_only name)
  set(links ${CMAKE_BINARY_DIR}/${name})
  file(MAKE_DIRECTORY ${links})
  foreach(header ${ARGN})
    find_path(${name}_directory ${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    file(CREATE_LINK ${${name}_directory}/${header} ${links}/${header} SYMBOLIC)
  endforeach()
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${links})
endfunction()
