# The shared libraries: all parts as libquenwick, the window toolkit over it as libquenwick-ui.

# quenwick_library(<target> <part>...): a shared library of the parts' objects, which shows what
# exports.map lists. Its calls of itself are its own, and what it calls of others is found when it is
# loaded: no call of a host waits for that.
function(quenwick_library target)
  list(TRANSFORM ARGN REPLACE "(.+)" "$<TARGET_OBJECTS:\\1>" OUTPUT_VARIABLE objects)
  add_library(${target} SHARED ${objects})
  add_library(quenwick::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    LINKER_LANGUAGE CXX VERSION "${PROJECT_VERSION}" SOVERSION 0
    LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/exports.map")
  target_compile_features(${target} INTERFACE cxx_std_20)
  target_link_libraries(${target} PRIVATE quenwick_flags)
  target_link_options(${target} PRIVATE "${quenwick_whole}"
    "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/exports.map" LINKER:-z,nodelete
    LINKER:--as-needed LINKER:--gc-sections LINKER:-Bsymbolic-functions LINKER:-z,now
    $<$<CXX_COMPILER_ID:Clang>:LINKER:--icf=all,-z,pack-relative-relocs>)
  if(NOT QUENWICK_SANITIZE)  # whose runtime is the program's
    target_link_options(${target} PRIVATE LINKER:-z,defs)
  endif()
endfunction()

get_property(parts GLOBAL PROPERTY QUENWICK_PARTS)
get_property(libraries GLOBAL PROPERTY QUENWICK_LIBRARIES)
# By its file: the exported target would name the imported one, which a host does not have.
list(TRANSFORM libraries REPLACE "^Boost::json$" "$<TARGET_FILE:Boost::json>")
quenwick_library(quenwick ${parts})
target_link_libraries(quenwick PRIVATE ${libraries})
target_sources(quenwick PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES
  quenwick.h
  API/Models/Decimal.h
  API/Models/OrderCompletedProduct.h
  API/Models/OrderCompletedProperties.h
  API/Models/Price.h
  API/Models/ProductCategory.h
  API/Models/ProductProperties.h
  API/Models/ProductSearchedProperties.h
  client/Configuration.h
  client/DeeplinkResult.h
  client/OpeningLinks.h
  client/PublicTypes.h
  client/QWClient.h
  client/Version.h
  deeplink/DeeplinkResolutionError.h
  logging/QWLogType.h
  platform/AnyPublisher.h
  platform/Bundle.h
  platform/Cancellable.h
  platform/Error.h
  platform/Export.h
  platform/LogLevel.h
  platform/TaskHandle.h
  platform/URL.h
  platform/Value.h
  runtime/quenwick_c.h)

if(QUENWICK_UI)
  quenwick_library(quenwick-ui quenwick_ui_gtk)
  add_library(quenwick::ui ALIAS quenwick-ui)
  target_link_libraries(quenwick-ui PUBLIC quenwick PRIVATE PkgConfig::GTK)
  target_sources(quenwick-ui PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES
    ui_gtk/quenwick-ui.h)
endif()
