# quenwick_view(<variable> <name> <folder>): makes the view of that name for a folder of the project.
function(quenwick_view variable name folder)
  set(view "${PROJECT_BINARY_DIR}/views/${name}")
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY "${view}/${parent}")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${view}/${folder}" SYMBOLIC)
  set(${variable} "${view}" PARENT_SCOPE)
endfunction()

# quenwick_part(<folder> SOURCES <file>... [USES <folder>...] [LINKS <library>...] [TOOLKIT])
#
# A part of the library: the folder quenwick/<folder> as a target of its own. A part sees the
# headers of the parts it uses and of no others: what a target can include is a view, a directory
# in the build tree that links to its folder alone. An arrow in the wrong direction finds no file.
# All parts make up the shared library, but for a window toolkit, which has one of its own.

function(quenwick_part folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "TOOLKIT" "" "SOURCES;USES;LINKS")
  string(REPLACE "/" "_" target "quenwick_${folder}")
  quenwick_view(view ${target} "quenwick/${folder}")

  list(TRANSFORM arg_SOURCES PREPEND "${PROJECT_SOURCE_DIR}/quenwick/${folder}/"
       REGEX "^[^/]")
  add_library(${target} STATIC ${arg_SOURCES})
  target_include_directories(${target} PUBLIC "${view}")
  target_compile_options(${target} PRIVATE "${quenwick_whole}")
  target_link_libraries(${target} PRIVATE quenwick_flags ${arg_LINKS})
  foreach(used IN LISTS arg_USES)
    string(REPLACE "/" "_" used "quenwick_${used}")
    target_link_libraries(${target} PUBLIC ${used})
  endforeach()
  target_precompile_headers(${target} REUSE_FROM quenwick_pch)
  if(NOT arg_TOOLKIT)
    set_property(GLOBAL APPEND PROPERTY QUENWICK_PARTS ${target})
    set_property(GLOBAL APPEND PROPERTY QUENWICK_LIBRARIES ${arg_LINKS})
  endif()
endfunction()

# Links a program or a test with the house's flags and precompiled header.
# (The precompiled header is position-independent as a library's code is, and so is a program's.)
function(quenwick_program target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_compile_options(${target} PRIVATE -fPIC)
  target_link_libraries(${target} PRIVATE quenwick_flags)
  target_precompile_headers(${target} REUSE_FROM quenwick_pch)
endfunction()
