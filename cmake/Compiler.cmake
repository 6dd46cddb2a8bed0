# The compiler the library is built with, its warnings, sanitizers and precompiled header.

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 14)
  message(FATAL_ERROR
    "GCC ${CMAKE_CXX_COMPILER_VERSION} destroys temporaries of co_await expressions twice; "
    "the library needs clang 19 or GCC 14.\n"
    "  apt-get install clang-19, and configure with\n"
    "  -DCMAKE_CXX_COMPILER=clang++-19\n"
    "Hosts may still use this GCC with an installed library: find_package(quenwick).")
endif()

# A guest is small: what takes time is the network.
string(REPLACE "-O3" "-Os" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_SCAN_FOR_MODULES OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(QUENWICK_CCACHE ccache)
if(QUENWICK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${QUENWICK_CCACHE})
endif()

add_library(quenwick_flags INTERFACE)
target_compile_options(quenwick_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                       -Wsign-conversion -Wnon-virtual-dtor -Werror -pthread
                       -fvisibility=hidden -fvisibility-inlines-hidden
                       "$<$<CONFIG:Release>:-ffunction-sections;-fdata-sections>")
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(quenwick_flags INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
  target_link_options(quenwick_flags INTERFACE -fuse-ld=lld)
endif()
# A release's shared library is optimised as a whole, over all files. Its objects hold both forms: what
# that works on, and the code that programs and tests link as ever.
set(quenwick_whole "$<$<AND:$<CONFIG:Release>,$<CXX_COMPILER_ID:Clang>>:-flto=full;-ffat-lto-objects>")

if(QUENWICK_SANITIZE)
  target_compile_options(quenwick_flags INTERFACE -fsanitize=${QUENWICK_SANITIZE}
                         -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(quenwick_flags INTERFACE -fsanitize=${QUENWICK_SANITIZE})
endif()

if(QUENWICK_FUZZ)
  target_compile_options(quenwick_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# One precompiled header of the standard library, shared by every target.
file(GENERATE OUTPUT "${PROJECT_BINARY_DIR}/pch.cpp" CONTENT "")
add_library(quenwick_pch STATIC "${PROJECT_BINARY_DIR}/pch.cpp")
target_link_libraries(quenwick_pch PRIVATE quenwick_flags)
target_precompile_headers(quenwick_pch PRIVATE
  <algorithm> <atomic> <chrono> <condition_variable> <coroutine> <cstdint> <deque> <exception>
  <filesystem> <functional> <map> <memory> <mutex> <optional> <span> <stop_token> <string>
  <string_view> <thread> <unordered_map> <utility> <variant> <vector>)
