# The libraries below the platform ring. scripts/bootstrap installs their packages.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenSSL 3 REQUIRED)
find_package(Boost 1.81 REQUIRED COMPONENTS json)

pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(CURL REQUIRED IMPORTED_TARGET libcurl>=7.87)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3)
pkg_check_modules(PCRE2 REQUIRED IMPORTED_TARGET libpcre2-8)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(SECRET REQUIRED IMPORTED_TARGET libsecret-1)
find_program(PLISTUTIL plistutil REQUIRED)

# Only for quenwick-ui. What their files say of the processor is no business of ours, and would not
# go with the precompiled header.
if(NOT QUENWICK_SANITIZE)
  pkg_check_modules(GTK IMPORTED_TARGET gtk4>=4.8 webkitgtk-6.0>=2.40)
endif()
if(GTK_FOUND)
  set_target_properties(PkgConfig::GTK PROPERTIES INTERFACE_COMPILE_OPTIONS "")
endif()
