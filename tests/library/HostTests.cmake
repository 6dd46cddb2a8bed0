# Hosts of other compilers, built with the installed library or with its sources, and run.

set(prefix "${CMAKE_CURRENT_BINARY_DIR}/installed")
set(library "${prefix}/${CMAKE_INSTALL_LIBDIR}")
set(consumer "${PROJECT_SOURCE_DIR}/examples/consumer")
set(hosts "${CMAKE_CURRENT_BINARY_DIR}/hostPrograms")
set(warnings -Wall -Wextra -Werror)
file(MAKE_DIRECTORY "${hosts}")

# host_test(<name> <timeout> COMMAND...): one that needs the installed library.
function(host_test name timeout)
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} FIXTURES_REQUIRED installed
    ENVIRONMENT "PKG_CONFIG_PATH=${library}/pkgconfig;LD_LIBRARY_PATH=${library}")
endfunction()

set(parts "library development")
if(QUENWICK_UI)
  string(APPEND parts " ui-library ui-development")
endif()
if(TARGET quenwick-cli)
  string(APPEND parts " tools")
endif()
add_test(NAME TheLibraryIsInstalled
  COMMAND sh -c "rm -rf '${prefix}' && for part in ${parts}; do \
    '${CMAKE_COMMAND}' --install '${PROJECT_BINARY_DIR}' --prefix '${prefix}' --component $part || exit 1; done")
set_tests_properties(TheLibraryIsInstalled PROPERTIES FIXTURES_SETUP installed)

set(documents "${prefix}/${CMAKE_INSTALL_DATADIR}/doc")
host_test(TheLinksOfInstalledDocumentsLeadSomewhere 60
  python3 "${PROJECT_SOURCE_DIR}/tests/docs/check_documents.py" links "${documents}")

# host_by_cmake(<name> <timeout> <example> <compiler> OPTION... RUN COMMAND...): an example as a
# project of its own.
function(host_by_cmake name timeout example compiler)
  cmake_parse_arguments(PARSE_ARGV 4 arg "" "" "RUN")
  list(JOIN warnings " " flags)
  host_test(${name} ${timeout} ${CMAKE_CTEST_COMMAND}
    --build-and-test "${example}" "${hosts}/${name}" --build-generator Ninja --build-noclean
    --build-options -DCMAKE_CXX_COMPILER=${compiler} "-DCMAKE_CXX_FLAGS=${flags}"
    ${arg_UNPARSED_ARGUMENTS}
    --test-command ${arg_RUN})
endfunction()

foreach(compiler g++ clang++-19)
  set(name AHostFindsTheInstalledLibrary.${compiler})
  host_by_cmake(${name} 300 "${documents}/libquenwick-dev/examples/consumer" ${compiler}
    "-DCMAKE_PREFIX_PATH=${prefix}"
    RUN $<TARGET_FILE:beside_sandbox> "${hosts}/${name}/consumer" @options)
endforeach()
set(name AHostBuildsTheLibraryAlong)
host_by_cmake(${name} 1200 "${consumer}" clang++-19 "-DQUENWICK_SOURCES=${PROJECT_SOURCE_DIR}"
  RUN $<TARGET_FILE:beside_sandbox> "${hosts}/${name}/consumer" @options)

add_test(NAME ACompilerThatCannotBuildTheLibraryIsToldWhatToDo
  COMMAND ${CMAKE_COMMAND} -S "${consumer}" -B "${hosts}/refused" -G Ninja
          -DCMAKE_CXX_COMPILER=g++ "-DQUENWICK_SOURCES=${PROJECT_SOURCE_DIR}")
set_tests_properties(ACompilerThatCannotBuildTheLibraryIsToldWhatToDo PROPERTIES
  PASS_REGULAR_EXPRESSION "CMAKE_CXX_COMPILER=clang\\+\\+-19")

# host_by_hand(<name> <source> <arguments> COMPILER...): compiled by a line, with pkg-config's words.
function(host_by_hand name source arguments)
  string(JOIN " " line ${ARGN} ${warnings})
  host_test(${name} 300 sh -c "${line} '${source}' $(pkg-config --cflags --libs quenwick) \
    -o '${hosts}/${name}' && '$<TARGET_FILE:beside_sandbox>' '${hosts}/${name}' ${arguments}")
endfunction()

host_by_hand(AHostIsBuiltByPkgConfig "${consumer}/main.cpp" @options g++ -std=c++20)
host_by_hand(AHostIsBuiltInC "${consumer}/main.c" @json gcc -std=c11 -pedantic)

if(QUENWICK_UI)
  string(JOIN " " line g++ -std=c++20 ${warnings})
  host_test(AHostWithWindowsIsBuiltByPkgConfig 300 sh -c "${line} \
    '${CMAKE_CURRENT_SOURCE_DIR}/library/windowHost.cpp' $(pkg-config --cflags --libs quenwick-ui) \
    -o '${hosts}/windows' && '${hosts}/windows'")
  set(name AHostWithWindowsFindsTheInstalledLibrary)
  host_by_cmake(${name} 300 "${documents}/libquenwick-dev/examples/storefront" g++
    "-DCMAKE_PREFIX_PATH=${prefix}" RUN sh -c "'${hosts}/${name}/storefront' --help")  # not ctest's
endif()
