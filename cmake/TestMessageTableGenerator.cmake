# Checks GenerateMessageTable.cmake:
#
#   cmake -DGENERATOR=<GenerateMessageTable.cmake> -DINPUT=<file.mc>
#         -DEXPECTED=<golden .cpp> -DWORK_DIR=<scratch folder> -P TestMessageTableGenerator.cmake
#
# The table generated from INPUT must equal EXPECTED byte for byte, also when
# the .mc has CR LF line ends, and a second run must leave the output's time
# stamp alone. Then each malformed table below must be refused with its
# message.

cmake_minimum_required(VERSION 3.20)

foreach(required GENERATOR INPUT EXPECTED WORK_DIR)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "TestMessageTableGenerator.cmake needs -D${required}=...")
  endif()
endforeach()

function(expect_same_file actual what)
  file(READ "${actual}" actualText)
  file(READ "${EXPECTED}" expectedText)
  if(NOT actualText STREQUAL expectedText)
    message(SEND_ERROR "${what}: ${actual} differs from ${EXPECTED}")
  endif()
endfunction()

function(run_generator input output resultVar errorVar)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" "-DINPUT=${input}" "-DOUTPUT=${output}" -P "${GENERATOR}"
    RESULT_VARIABLE result
    ERROR_VARIABLE error)
  set(${resultVar} "${result}" PARENT_SCOPE)
  set(${errorVar} "${error}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}/lf" "${WORK_DIR}/crlf" "${WORK_DIR}/bad")
get_filename_component(inputName "${INPUT}" NAME)

# As written.
set(output "${WORK_DIR}/lf/table.cpp")
run_generator("${INPUT}" "${output}" result error)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the generator failed on ${INPUT}:\n${error}")
endif()
expect_same_file("${output}" "LF input")

# Unchanged content keeps the old file, so nothing downstream recompiles.
# The time stamp has one-second steps, hence the pause.
file(TIMESTAMP "${output}" before "%s")
execute_process(COMMAND "${CMAKE_COMMAND}" -E sleep 1.1)
run_generator("${INPUT}" "${output}" result error)
file(TIMESTAMP "${output}" after "%s")
if(NOT result EQUAL 0 OR NOT after STREQUAL before)
  message(SEND_ERROR "a second run rewrote an unchanged table")
endif()

# With CR LF line ends.
file(READ "${INPUT}" content)
string(REPLACE "\r\n" "\n" content "${content}")
string(REPLACE "\n" "\r\n" content "${content}")
file(WRITE "${WORK_DIR}/crlf/${inputName}" "${content}")
run_generator("${WORK_DIR}/crlf/${inputName}" "${WORK_DIR}/crlf/table.cpp" result error)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the generator failed on the CR LF copy:\n${error}")
endif()
expect_same_file("${WORK_DIR}/crlf/table.cpp" "CR LF input")

# Malformed tables: each case is a body after a common header, and a phrase
# its error must contain.
set(header "FacilityNames=(Demo=0x138)\nLanguageNames=(English=0x409:MSG00409)\n")
set(one "MessageId=0x1\nSeverity=Error\nFacility=Demo\nSymbolicName=MSG_ONE\nLanguage=English\nOne.\n.\n")
set(cases
  duplicate_code "${one}MessageId=0x1\nSeverity=Error\nFacility=Demo\nSymbolicName=MSG_TWO\nLanguage=English\nTwo.\n.\n" "code 0xe1380001 of MSG_TWO is already used by MSG_ONE"
  number_reused "${one}MessageId=0x1\nSeverity=Warning\nFacility=Demo\nSymbolicName=MSG_TWO\nLanguage=English\nTwo.\n.\n" "already used by MSG_ONE with another severity"
  unknown_severity "MessageId=0x1\nSeverity=Fatal\nFacility=Demo\nLanguage=English\nOne.\n.\n" "unknown severity 'Fatal'"
  unknown_facility "MessageId=0x1\nSeverity=Error\nFacility=Other\nLanguage=English\nOne.\n.\n" "unknown facility 'Other'"
  unterminated_last "MessageId=0x1\nSeverity=Error\nFacility=Demo\nSymbolicName=MSG_ONE\nLanguage=English\nOne.\n" "MSG_ONE has no \".\" line"
  unterminated_inner "MessageId=0x1\nSeverity=Error\nFacility=Demo\nSymbolicName=MSG_ONE\nLanguage=English\nOne.\nMessageId=0x2\nSeverity=Error\nFacility=Demo\nLanguage=English\nTwo.\n.\n" "MSG_ONE has no \".\" line"
  leading_dot "MessageId=0x1\nSeverity=Error\nFacility=Demo\nLanguage=English\n.hidden\n.\n" "may not start with"
  missing_severity "MessageId=0x1\nFacility=Demo\nSymbolicName=MSG_ONE\nLanguage=English\nOne.\n.\n" "MSG_ONE names no Severity"
  duplicate_symbol "${one}MessageId=0x2\nSeverity=Error\nFacility=Demo\nSymbolicName=MSG_ONE\nLanguage=English\nTwo.\n.\n" "symbolic name MSG_ONE is already used"
  too_large "MessageId=0x10000\nSeverity=Error\nFacility=Demo\nLanguage=English\nOne.\n.\n" "does not fit in 16 bits"
)
list(LENGTH cases caseValues)
math(EXPR lastCase "${caseValues} / 3 - 1")
foreach(index RANGE ${lastCase})
  math(EXPR at "${index} * 3")
  list(GET cases ${at} name)
  math(EXPR at "${at} + 1")
  list(GET cases ${at} body)
  math(EXPR at "${at} + 1")
  list(GET cases ${at} phrase)
  file(WRITE "${WORK_DIR}/bad/${name}.mc" "${header}${body}")
  run_generator("${WORK_DIR}/bad/${name}.mc" "${WORK_DIR}/bad/${name}.cpp" result error)
  string(FIND "${error}" "${phrase}" found)
  if(result EQUAL 0 OR found LESS 0)
    message(SEND_ERROR "${name}: expected a failure mentioning '${phrase}', got result ${result}:\n${error}")
  endif()
  if(EXISTS "${WORK_DIR}/bad/${name}.cpp")
    message(SEND_ERROR "${name}: a refused table still produced output")
  endif()
endforeach()
