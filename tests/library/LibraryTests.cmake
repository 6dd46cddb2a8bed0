# The library as hosts have it: what it shows, how it is unloaded, and hosts that are built with it.

add_executable(library_tests library/HeadersTest.cpp library/SymbolsTest.cpp support/Program.cpp)
quenwick_view(tests_view tests tests)
target_include_directories(library_tests PRIVATE "${tests_view}")
target_link_libraries(library_tests PRIVATE GTest::gtest_main)
get_target_property(headers quenwick HEADER_SET)
list(JOIN headers ":" headers)
target_compile_definitions(library_tests PRIVATE QUENWICK_LIBRARY="$<TARGET_FILE:quenwick>"
  QUENWICK_SOURCES="${PROJECT_SOURCE_DIR}" QUENWICK_HEADERS="${headers}")
quenwick_program(library_tests)
add_dependencies(library_tests quenwick)
gtest_discover_tests(library_tests DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
  PROPERTIES TIMEOUT 300)

add_executable(beside_sandbox library/besideSandbox.cpp support/Program.cpp)
target_include_directories(beside_sandbox PRIVATE "${tests_view}")
target_link_libraries(beside_sandbox PRIVATE quenwick_sandbox Boost::json)
quenwick_program(beside_sandbox)

add_executable(unloading library/unloading.cpp)
quenwick_view(runtime_view runtime quenwick/runtime)
target_include_directories(unloading PRIVATE "${runtime_view}")
target_link_libraries(unloading PRIVATE ${CMAKE_DL_LIBS})
quenwick_program(unloading)
add_test(NAME AHostOpensUsesAndClosesTheLibrary
  COMMAND beside_sandbox $<TARGET_FILE:unloading> $<TARGET_FILE:quenwick> @json)
set_tests_properties(AHostOpensUsesAndClosesTheLibrary PROPERTIES TIMEOUT 300)

# A host's compiler knows nothing of a sanitizer's runtime.
if(NOT QUENWICK_SANITIZE)
  include(library/HostTests.cmake)
endif()
