# What `cmake --install` puts where, in components that are the packages of cmake/Packages.cmake.

include(CMakePackageConfigHelpers)
set(package_directory "${CMAKE_INSTALL_LIBDIR}/cmake/quenwick")
set(made "${PROJECT_BINARY_DIR}/installed-files")
set(quenwick_packages library:libquenwick0 development:libquenwick-dev)

# install_library(<target> <name> <headers' component's prefix>): with headers and all that hosts
# need to find it, as quenwick::<name>.
function(install_library target name prefix)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  install(TARGETS ${target} EXPORT ${target}
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${prefix}library
            NAMELINK_COMPONENT ${prefix}development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT ${prefix}development)
  install(EXPORT ${target} DESTINATION "${package_directory}" NAMESPACE quenwick::
    FILE ${target}-targets.cmake COMPONENT ${prefix}development)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${target}.pc.in" "${made}/${target}.pc" @ONLY)
  install(FILES "${made}/${target}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT ${prefix}development)
endfunction()

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  OUTPUT_VARIABLE prefix_from_pkgconfig)
install_library(quenwick quenwick "")
if(QUENWICK_UI)
  install_library(quenwick-ui ui ui-)
  list(APPEND quenwick_packages ui-library:libquenwick-ui0 ui-development:libquenwick-ui-dev)
endif()

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/quenwick-config.cmake.in"
  "${made}/quenwick-config.cmake" INSTALL_DESTINATION "${package_directory}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${made}/quenwick-config-version.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${made}/quenwick-config.cmake" "${made}/quenwick-config-version.cmake"
  DESTINATION "${package_directory}" COMPONENT development)
install(FILES README.md CONTRIBUTING.md CHANGELOG.md LICENSE
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libquenwick-dev" COMPONENT development)
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libquenwick-dev"
  COMPONENT development FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(DIRECTORY examples/consumer examples/python examples/storefront
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libquenwick-dev/examples" COMPONENT development
  PATTERN __pycache__ EXCLUDE)

if(QUENWICK_PROGRAMS)  # else tests and benchmarks alone have them built
  list(APPEND quenwick_packages tools:quenwick-tools)
  install(TARGETS quenwick-cli quenwick-sandbox
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
  install(FILES docs/command-line.md docs/sandbox.md
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/quenwick-tools" COMPONENT tools)
endif()

# Each package has its licence and its changes.
file(ARCHIVE_CREATE OUTPUT "${made}/changelog.gz"
  PATHS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" FORMAT raw COMPRESSION GZip)
foreach(package IN LISTS quenwick_packages)
  string(REGEX MATCH "^(.*):(.*)$" package "${package}")
  set(documents "${CMAKE_INSTALL_DATADIR}/doc/${CMAKE_MATCH_2}")
  install(FILES LICENSE DESTINATION "${documents}" RENAME copyright COMPONENT ${CMAKE_MATCH_1})
  install(FILES "${made}/changelog.gz" DESTINATION "${documents}" COMPONENT ${CMAKE_MATCH_1})
endforeach()
include(Packages)
