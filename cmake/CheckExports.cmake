cmake_minimum_required(VERSION 3.25)
# cmake -DLIBRARY=<libcfgdeck.so> -DEXPORTS=<cfgdeck.exports> -P CheckExports.cmake
#
# Compares the dynamic symbols a shared library defines with the list of
# names it may export. A symbol belongs to the name before its first "::" or
# "(" (after "vtable for " and the like). libstdc++'s unique template objects
# (nm type u, in std::) come with any use of the standard library and are
# not part of the interface, and neither are the weak copies of libstdc++'s
# function templates that an unoptimised build emits (nm types W and V).
find_program(NM NAMES nm REQUIRED)
execute_process(COMMAND ${NM} -DC --defined-only ${LIBRARY}
                OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()

file(STRINGS ${EXPORTS} allowed REGEX "^[^#]")
set(seen)
set(unexpected)
string(REPLACE "\n" ";" lines "${symbols}")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^[0-9a-f]* *([A-Za-z]) (.*)$")
    continue()
  endif()
  set(type ${CMAKE_MATCH_1})
  set(name "${CMAKE_MATCH_2}")
  if(type MATCHES "^[uWV]$" AND name MATCHES "(^| )std::")
    continue()
  endif()
  string(REGEX REPLACE "^(typeinfo name for |typeinfo for |vtable for |VTT for |construction vtable for )" "" owner "${name}")
  string(REGEX REPLACE "(::|\\().*$" "" owner "${owner}")
  if(owner IN_LIST allowed)
    list(APPEND seen ${owner})
  else()
    list(APPEND unexpected "${name}")
  endif()
endforeach()

set(missing)
foreach(name IN LISTS allowed)
  if(NOT name IN_LIST seen)
    list(APPEND missing ${name})
  endif()
endforeach()
if(unexpected OR missing)
  string(REPLACE ";" "\n  " unexpected "${unexpected}")
  string(REPLACE ";" "\n  " missing "${missing}")
  message(FATAL_ERROR "Exported symbols differ from ${EXPORTS}\nunexpected:\n  ${unexpected}\nmissing:\n  ${missing}")
endif()
list(REMOVE_DUPLICATES seen)
list(LENGTH seen count)
message(STATUS "The library exports exactly the ${count} listed names")
