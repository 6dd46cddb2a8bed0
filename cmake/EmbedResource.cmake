# embed_resource(<file> <name> <variable>)
#
# A source, made by the build, that holds the file's bytes as the text quenwick::resources::<name>.
# Its path is put into the variable. The file may itself be made by the build.
#
# The same file is the script that makes it:
#   cmake -DINPUT=<file> -DNAME=<name> -DOUTPUT=<source> -P EmbedResource.cmake

if(NOT CMAKE_SCRIPT_MODE_FILE)
  set(embed_resource_script "${CMAKE_CURRENT_LIST_FILE}")

  function(embed_resource file name variable)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
    add_custom_command(
      OUTPUT "${source}"
      COMMAND "${CMAKE_COMMAND}" "-DINPUT=${file}" "-DNAME=${name}" "-DOUTPUT=${source}"
              -P "${embed_resource_script}"
      DEPENDS "${file}" "${embed_resource_script}"
      COMMENT "Embedding ${name}"
      VERBATIM)
    set(${variable} "${source}" PARENT_SCOPE)
  endfunction()
  return()
endif()

file(SIZE "${INPUT}" size)
if(size EQUAL 0)
  message(FATAL_ERROR "${INPUT} is empty")
endif()
file(READ "${INPUT}" bytes HEX)
string(REPEAT "." 28 line)
string(REGEX REPLACE "(${line})" "\\1\n    " bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
file(WRITE "${OUTPUT}" "#include <string_view>

namespace quenwick::resources {
namespace {

constexpr char kBytes[] = {
    ${bytes}};

}  // namespace

extern const std::string_view ${NAME};
constinit const std::string_view ${NAME}(kBytes, sizeof kBytes);

}  // namespace quenwick::resources
")
