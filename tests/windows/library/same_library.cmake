# A second build, in another folder, gives the same file.
cmake_policy(VERSION 3.22)
file(REMOVE_RECURSE ${FOLDER})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${FOLDER} -G Ninja
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=${FLAGS}
  -DRENDARA_TINYXML_SOURCES=${TINYXML} -DRENDARA_TOOLS=OFF -DRENDARA_STANDIN=OFF -DRENDARA_TESTS=OFF
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${FOLDER} --target rendara_creo OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${LIBRARY} ${FOLDER}/bin/rendara_creo.dll
  RESULT_VARIABLE differ)
if(differ)
  message(FATAL_ERROR "two builds differ")
endif()
file(REMOVE_RECURSE ${FOLDER})
