# Exports MODEL twice with the program's own plug-in and, where there is one, once with OTHER_PLUGIN. All packages must
# be the same.
file(MAKE_DIRECTORY ${FOLDER})
set(first ${FOLDER}/${NAME}.first.rpk)
set(again ${FOLDER}/${NAME}.again.rpk)

function(expect_same what)
  execute_process(COMMAND ${PROGRAM} ${ARGN} export ${MODEL} ${again} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${first} ${again} RESULT_VARIABLE differ)
  file(REMOVE ${again})
  if(differ)
    message(FATAL_ERROR "the package of ${NAME} differs ${what}")
  endif()
endfunction()

execute_process(COMMAND ${PROGRAM} export ${MODEL} ${first} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
expect_same("in a second run")
if(EXISTS ${OTHER_PLUGIN})
  expect_same("with the other plug-in" --plugin ${OTHER_PLUGIN})
endif()
file(REMOVE ${first})
if(NOT EXISTS ${OTHER_PLUGIN})
  message("skipped: two runs agree, but there is no plug-in of another compiler to compare with")
endif()
