# header_only(NAME HEADER...): makes a target for header-only libraries of this machine, for use with a cross compiler. Their
# directory also holds the machine's own headers, so a folder with links to the named headers is used.
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
