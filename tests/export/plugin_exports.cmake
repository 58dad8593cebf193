# The plug-in exports its two entries and nothing else.
execute_process(COMMAND ${NM} --dynamic --defined-only --format=posix ${PLUGIN}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^ \n]+" symbols "${table}")
list(TRANSFORM symbols STRIP)
# What a sanitizer adds is none of the plug-in's.
list(FILTER symbols EXCLUDE REGEX "^(__asan_|__odr_asan|__ubsan_|__sanitizer_|___asan_)")
list(SORT symbols)
if(NOT symbols STREQUAL "user_initialize_plus;user_terminate_plus")
  message(FATAL_ERROR "exported: ${symbols}")
endif()
