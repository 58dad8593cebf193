# Exports MODEL with the program's own plug-in and, in a second run, with OTHER_PLUGIN, or with its own again where there
# is no other. The packages must be the same.
file(MAKE_DIRECTORY ${FOLDER})
set(first ${FOLDER}/${NAME}.first.rpk)
set(again ${FOLDER}/${NAME}.again.rpk)

set(plugin)
if(EXISTS ${OTHER_PLUGIN})
  set(plugin --plugin ${OTHER_PLUGIN})
endif()

execute_process(COMMAND ${PROGRAM} export ${MODEL} ${first} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${PROGRAM} ${plugin} export ${MODEL} ${again} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${first} ${again} RESULT_VARIABLE differ)
file(REMOVE ${first} ${again})
if(differ)
  message(FATAL_ERROR "the package of ${NAME} differs in a second run")
endif()
if(NOT EXISTS ${OTHER_PLUGIN})
  message("skipped: two runs agree, but there is no plug-in of another compiler to compare with")
endif()
