# The examples and the demo, as a newcomer runs them.
quenwick_test(example_tests examples/DemoTest.cpp LINKS quenwick_platform)
target_compile_definitions(example_tests PRIVATE
  DEMO="${PROJECT_SOURCE_DIR}/scripts/demo" BUILD_FOLDER="${CMAKE_BINARY_DIR}"
  SHOP="$<TARGET_FILE:shop>" RUNTIME_LIBRARY="$<TARGET_FILE:quenwick>")
add_dependencies(example_tests shop quenwick-sandbox quenwick)
