# Build rules for the library's message table. One .mc file lists every
# message; the build turns it into
#   - a C++ table (both platforms):       cfgdeck_add_message_table
#   - a message-table resource (Windows): cfgdeck_message_resource
# Both produce codes with the customer bit set.
#
# The rules are custom commands, so call each function in the directory that
# defines the target whose sources receive the output.

set(_cfgdeckMessageTableDir "${CMAKE_CURRENT_LIST_DIR}")

# cfgdeck_add_message_table(TARGET <target> MC_FILE <file.mc>)
#
# Generates generated/NMessageTableData.cpp (kLibraryMessageTable) in the
# current binary directory and adds it to <target>. The target must have the
# repository root on its include path.
function(cfgdeck_add_message_table)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;MC_FILE" "")
  if(NOT arg_TARGET OR NOT arg_MC_FILE)
    message(FATAL_ERROR "cfgdeck_add_message_table needs TARGET and MC_FILE")
  endif()
  get_filename_component(mcFile "${arg_MC_FILE}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  get_filename_component(mcName "${mcFile}" NAME)
  set(script "${_cfgdeckMessageTableDir}/GenerateMessageTable.cmake")
  set(output "${CMAKE_CURRENT_BINARY_DIR}/generated/NMessageTableData.cpp")

  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DINPUT=${mcFile}" "-DOUTPUT=${output}" -P "${script}"
    DEPENDS "${mcFile}" "${script}"
    COMMENT "Generating the message table from ${mcName}"
    VERBATIM)
  target_sources(${arg_TARGET} PRIVATE "${output}")
endfunction()

# cfgdeck_message_resource(OUT_VAR <var> MC_FILE <file.mc>)
#
# In a Windows build with a resource compiler, compiles <file.mc> with windmc
# (or mc) into a .rc and its .bin, and sets <var> to the .rc for the caller to
# add to the shared library's sources: the resource must sit in the DLL,
# where FormatMessage looks for it. Elsewhere sets <var> to empty.
function(cfgdeck_message_resource)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "OUT_VAR;MC_FILE" "")
  if(NOT arg_OUT_VAR OR NOT arg_MC_FILE)
    message(FATAL_ERROR "cfgdeck_message_resource needs OUT_VAR and MC_FILE")
  endif()
  set(${arg_OUT_VAR} "" PARENT_SCOPE)
  if(NOT CMAKE_SYSTEM_NAME STREQUAL "Windows")
    return()
  endif()
  if(NOT CMAKE_RC_COMPILER)
    message(WARNING "No resource compiler (enable the RC language): the DLL will carry no message table")
    return()
  endif()

  _cfgdeck_find_message_compiler(messageCompiler)
  get_filename_component(mcFile "${arg_MC_FILE}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  get_filename_component(mcName "${mcFile}" NAME)
  get_filename_component(mcStem "${mcFile}" NAME_WE)
  set(outputDir "${CMAKE_CURRENT_BINARY_DIR}/generated/messages")
  set(crlfCopy "${outputDir}/${mcName}")
  set(rcFile "${outputDir}/${mcStem}.rc")

  # -c sets the customer bit, -U stores the texts as UTF-16, -b prefixes the
  # .bin with the .mc name so that two tables never share a file. windmc and
  # mc agree on these options.
  add_custom_command(
    OUTPUT "${rcFile}" "${outputDir}/${mcStem}.h"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${outputDir}"
    COMMAND "${CMAKE_COMMAND}" "-DINPUT=${mcFile}" "-DOUTPUT=${crlfCopy}"
            -P "${_cfgdeckMessageTableDir}/ConvertToCrLf.cmake"
    COMMAND "${messageCompiler}" -b -c -U -h "${outputDir}" -r "${outputDir}" "${crlfCopy}"
    DEPENDS "${mcFile}" "${_cfgdeckMessageTableDir}/ConvertToCrLf.cmake"
    COMMENT "Compiling the message resource from ${mcName}"
    VERBATIM)
  set(${arg_OUT_VAR} "${rcFile}" PARENT_SCOPE)
endfunction()

# Finds the message compiler that belongs to the resource compiler: the
# windmc beside a prefixed windres first, then the usual names.
function(_cfgdeck_find_message_compiler outVar)
  set(names "")
  get_filename_component(rcName "${CMAKE_RC_COMPILER}" NAME)
  get_filename_component(rcDir "${CMAKE_RC_COMPILER}" DIRECTORY)
  if(rcName MATCHES "^(.*)windres(\\.exe)?$")
    list(APPEND names "${CMAKE_MATCH_1}windmc")
  endif()
  foreach(target IN ITEMS "${CMAKE_C_COMPILER_TARGET}" "${CMAKE_CXX_COMPILER_TARGET}")
    if(target)
      list(APPEND names "${target}-windmc")
    endif()
  endforeach()
  list(APPEND names x86_64-w64-mingw32-windmc windmc mc)
  find_program(CFGDECK_MESSAGE_COMPILER NAMES ${names} HINTS "${rcDir}"
               DOC "Message compiler (windmc or mc) for the DLL's message table")
  if(NOT CFGDECK_MESSAGE_COMPILER)
    message(FATAL_ERROR "No message compiler found (tried ${names}); install the mingw-w64 binutils "
                        "or set CFGDECK_MESSAGE_COMPILER")
  endif()
  set(${outVar} "${CFGDECK_MESSAGE_COMPILER}" PARENT_SCOPE)
endfunction()

# cfgdeck_add_message_table_test(NAME <test> MC_FILE <file.mc> EXPECTED <file.cpp>)
#
# A test that runs the generator on <file.mc> (as written and with CR LF line
# ends) and compares the result with <EXPECTED> byte for byte, then checks
# that malformed tables are refused.
function(cfgdeck_add_message_table_test)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;MC_FILE;EXPECTED" "")
  if(NOT arg_NAME OR NOT arg_MC_FILE OR NOT arg_EXPECTED)
    message(FATAL_ERROR "cfgdeck_add_message_table_test needs NAME, MC_FILE and EXPECTED")
  endif()
  get_filename_component(mcFile "${arg_MC_FILE}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  get_filename_component(expected "${arg_EXPECTED}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  add_test(
    NAME ${arg_NAME}
    COMMAND "${CMAKE_COMMAND}"
            "-DGENERATOR=${_cfgdeckMessageTableDir}/GenerateMessageTable.cmake"
            "-DINPUT=${mcFile}" "-DEXPECTED=${expected}"
            "-DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/${arg_NAME}"
            -P "${_cfgdeckMessageTableDir}/TestMessageTableGenerator.cmake")
endfunction()
