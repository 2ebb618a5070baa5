# Copies a text file with CR LF line ends:
#
#   cmake -DINPUT=<file> -DOUTPUT=<file> -P ConvertToCrLf.cmake
#
# windmc stores each message line with the line end it finds in the file, and
# the message texts must end in CR LF whatever the checkout uses. Only string
# operations touch the content, so ";" and brackets survive. The output is
# rewritten only when it changes.

cmake_minimum_required(VERSION 3.20)

if(NOT DEFINED INPUT OR NOT DEFINED OUTPUT)
  message(FATAL_ERROR "usage: cmake -DINPUT=<file> -DOUTPUT=<file> -P ConvertToCrLf.cmake")
endif()

file(READ "${INPUT}" content)
string(REPLACE "\r\n" "\n" content "${content}")
string(REPLACE "\n" "\r\n" content "${content}")

if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" previous)
  if(previous STREQUAL content)
    return()
  endif()
endif()
file(WRITE "${OUTPUT}" "${content}")
