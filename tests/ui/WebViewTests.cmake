# In-app views in a real engine, on an X server of their own. Without sanitizers: the engine's own
# processes would not bear them.

pkg_check_modules(XTEST REQUIRED IMPORTED_TARGET xtst x11 cairo)
pkg_check_modules(ADWAITA REQUIRED IMPORTED_TARGET libadwaita-1)
set_target_properties(PkgConfig::ADWAITA PROPERTIES INTERFACE_COMPILE_OPTIONS "")

add_executable(ui_host ui/host.cpp)
target_link_libraries(ui_host PRIVATE
  quenwick_test_support quenwick_ui quenwick_ui_gtk PkgConfig::GTK PkgConfig::ADWAITA)
quenwick_program(ui_host)

add_library(quenwick_ui_test_support STATIC
  ui/ChildProcess.cpp ui/Desktop.cpp ui/Display.cpp ui/Host.cpp ui/ShopVisit.cpp)
target_link_libraries(quenwick_ui_test_support PUBLIC quenwick_test_support PRIVATE PkgConfig::XTEST)
target_compile_definitions(quenwick_ui_test_support PRIVATE
  UI_HOST="$<TARGET_FILE:ui_host>" STOREFRONT="$<TARGET_FILE:storefront>")
quenwick_program(quenwick_ui_test_support)
add_dependencies(quenwick_ui_test_support ui_host storefront)

# One process for all of them: they share a display, a host and a sandbox.
add_executable(web_view_tests
  support/main.cpp ui/ClipboardTest.cpp ui/WebViewPolicyTest.cpp ui/WebViewTest.cpp)
target_link_libraries(web_view_tests PRIVATE quenwick_ui_test_support)
quenwick_program(web_view_tests)
add_test(NAME web_view_tests COMMAND web_view_tests)
set_tests_properties(web_view_tests PROPERTIES TIMEOUT 900)

quenwick_test(storefront_tests ui/StorefrontTest.cpp LINKS quenwick_ui_test_support)

add_executable(ui_screenshots ui/screenshots.cpp)
target_link_libraries(ui_screenshots PRIVATE quenwick_ui_test_support)
quenwick_program(ui_screenshots)
