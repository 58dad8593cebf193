# Runs creo-standin once and compares what came of it. Called by add_standin_test(); the variables:
#   PROGRAM, ARGS       what is run; | parts the arguments, since ; would be lost on the way
#   INPUT               file for standard input
#   EXIT                the exit code that is expected, a regular expression
#   OUTPUT, ERROR       regular expressions for standard output and standard error; without ERROR it must be empty
#   FOLDER              folder to run in, made anew
#   SETUP, CHECK        CMake scripts included before and after, which see FOLDER; CHECK may call fail()
#   WRITES              files that FOLDER must hold afterwards, | between them, beside what SETUP left
cmake_minimum_required(VERSION 3.22)

function(fail message)
  message(FATAL_ERROR "${message}\n--- exit ${result}\n--- standard output\n${output}\n--- standard error\n${error}")
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}/files" "${FOLDER}/tmp")
set(WORK "${FOLDER}/files")
if(SETUP)
  include("${SETUP}")
endif()
file(GLOB_RECURSE before RELATIVE "${WORK}" "${WORK}/*")

string(REPLACE "|" ";" arguments "${ARGS}")
set(input)
if(INPUT)
  set(input INPUT_FILE "${INPUT}")
else()
  set(input INPUT_FILE /dev/null)
endif()
set(ENV{TMPDIR} "${FOLDER}/tmp")
set(ENV{RENDARA_MACHINE} "${FOLDER}/machine")
file(WRITE "${FOLDER}/machine/registry.reg"
  "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\SOFTWARE]\n")
execute_process(COMMAND "${PROGRAM}" ${arguments} ${input}
  WORKING_DIRECTORY "${WORK}" RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)

if(NOT result MATCHES "^(${EXIT})$")
  fail("the exit code is ${result}, not ${EXIT}")
endif()
if(OUTPUT AND NOT output MATCHES "${OUTPUT}")
  fail("standard output does not match ${OUTPUT}")
endif()
if(ERROR AND NOT error MATCHES "${ERROR}")
  fail("standard error does not match ${ERROR}")
endif()
if(NOT ERROR AND NOT error STREQUAL "")
  fail("standard error is not empty")
endif()

# Nothing is left but what was asked for.
file(GLOB left "${FOLDER}/tmp/*" "${FOLDER}/tmp/.*")
if(left)
  fail("left behind: ${left}")
endif()
string(REPLACE "|" ";" written "${WRITES}")
file(GLOB_RECURSE after RELATIVE "${WORK}" "${WORK}/*")
set(expected ${before} ${written})
list(SORT expected)
list(REMOVE_DUPLICATES expected)
list(SORT after)
if(NOT "${after}" STREQUAL "${expected}")
  fail("the folder holds ${after}, expected ${expected}")
endif()
if(CHECK)
  include("${CHECK}")
endif()
