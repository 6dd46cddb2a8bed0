# Debian packages, one for each component of cmake/Install.cmake. `make packages` builds them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The developers of Quenwick <developers@quenwick.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# debian_package(<component> <section> <what is in it> [DEPENDENCY...])
macro(debian_package component section text)
  if("${quenwick_packages}" MATCHES "(^|;)${component}:([^;]+)")
    set(name "${CMAKE_MATCH_2}")
    string(TOUPPER "${component}" upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${text}")
    string(JOIN ", " CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS ${ARGN})
    if(NOT "${component}" MATCHES "development")
      set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ON)
    endif()
  endif()
endmacro()

set(same "(= ${PROJECT_VERSION})")
debian_package(library libs
  "The shared library: resolves tracking links, reports what users do in a shop, and keeps
identifiers and secrets.")
debian_package(development libdevel
  "Headers, build files and examples, for building C++ and C programs with the library."
  "libquenwick0 ${same}")
debian_package(ui-library libs
  "In-app views on GTK 4 and WebKitGTK, over an application's window." "libquenwick0 ${same}")
debian_package(ui-development libdevel
  "Header and build files for GTK applications with in-app views."
  "libquenwick-ui0 ${same}" "libquenwick-dev ${same}")
debian_package(tools utils
  "The command-line program quenwick, and the sandbox that is the service on this machine.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/quenwick")
include(CPack)
