# The C functions, as a program finds them that opens the shared library.
add_executable(runtime_tests
  runtime/BadInputTest.cpp runtime/PythonTest.cpp runtime/SelectorsTest.cpp runtime/SessionTest.cpp
  support/Program.cpp)
quenwick_view(runtime_view runtime quenwick/runtime)
quenwick_view(tests_view tests tests)
target_include_directories(runtime_tests PRIVATE "${runtime_view}" "${tests_view}")
target_link_libraries(runtime_tests PRIVATE quenwick_sandbox Boost::json GTest::gtest_main)
quenwick_program(runtime_tests)

# An interpreter is not built with a sanitizer: its runtime is loaded before everything else.
set(sanitizer_runtime "")
if(QUENWICK_SANITIZE)
  string(REGEX REPLACE "^thread.*" tsan name "${QUENWICK_SANITIZE}")
  string(REGEX REPLACE "^address.*" asan name "${name}")
  execute_process(
    COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=libclang_rt.${name}-${CMAKE_SYSTEM_PROCESSOR}.so"
    OUTPUT_VARIABLE sanitizer_runtime OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
target_compile_definitions(runtime_tests PRIVATE
  RUNTIME_LIBRARY="$<TARGET_FILE:quenwick>"
  SANITIZER_RUNTIME="${sanitizer_runtime}"
  PYTHON_EXAMPLE="${PROJECT_SOURCE_DIR}/examples/python/quenwick_session.py")
add_dependencies(runtime_tests quenwick)
gtest_discover_tests(runtime_tests DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
  PROPERTIES TIMEOUT 300)

foreach(compiler gcc clang-19)
  add_test(NAME "TheCInterfaceCompilesInAHost.${compiler}"
    COMMAND ${compiler} -std=c11 -fsyntax-only -Wall -Wextra -Wpedantic -Werror
            "-I${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/runtime/host.c")
endforeach()
