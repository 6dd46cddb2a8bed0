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

# debian_package(<component> <section> <what it is> <what it holds> [DEPENDENCY...])
macro(debian_package component section summary text)
  if("${quenwick_packages}" MATCHES "(^|;)${component}:([^;]+)")
    set(name "${CMAKE_MATCH_2}")
    string(TOUPPER "${component}" upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}")
    list(JOIN ARGN ", " dependencies)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${dependencies}")
    if(NOT component MATCHES development)
      set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ON)
      set(CPACK_DEBIAN_${upper}_PACKAGE_GENERATE_SHLIBS ON)
    endif()
  endif()
endmacro()

set(same "(= ${PROJECT_VERSION})")
debian_package(library libs "client library for marketing links and behavioural events"
  "Resolves tracking links, reports what users do in a shop, and keeps identifiers and secrets.")
debian_package(development libdevel "headers and build files of libquenwick"
  "For building C++ and C programs with the library." "libquenwick0 ${same}")
debian_package(ui-library libs "in-app views of libquenwick on GTK 4 and WebKitGTK"
  "Shows the service's pages over an application's window." "libquenwick0 ${same}")
debian_package(ui-development libdevel "headers and build files of libquenwick-ui"
  "For building GTK applications with in-app views."
  "libquenwick-ui0 ${same}" "libquenwick-dev ${same}")
debian_package(tools utils "command-line program and sandbox of libquenwick"
  "Resolves links and sends events from a terminal, and runs the service on this machine.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/quenwick")
include(CPack)
