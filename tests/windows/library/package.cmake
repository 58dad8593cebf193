# What users get: the archive is unpacked to a fresh folder, and the stand-in starts the plug-in from what the archive
# tells the CAD system. No file of the build is used but the stand-in and the snapshot.
cmake_policy(VERSION 3.22)
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${CPACK} --config ${BUILD}/CPackConfig.cmake -B ${FOLDER}/made OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
set(archive ${FOLDER}/made/${NAME}.zip)
set(installed "${FOLDER}/Rendara for Creo")
file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION "${installed}")

file(GLOB_RECURSE files RELATIVE "${installed}" "${installed}/*")
set(expected INSTALL.txt creotk.dat rendara_creo.dll licences/gcc-runtime.txt licences/mingw-w64-runtime.txt
  licences/tinyxml.txt)
foreach(folder text resource)
  file(GLOB_RECURSE sources RELATIVE ${SOURCE}/resources ${SOURCE}/resources/${folder}/*)
  list(APPEND expected ${sources})
endforeach()
list(SORT files)
list(SORT expected)
if(NOT files STREQUAL expected)
  message(FATAL_ERROR "the archive holds ${files}, and should hold ${expected}")
endif()

# A part made by hand is enough; what is written is compared elsewhere.
if(NOT EXISTS ${LINUX_STANDIN})
  message("skipped: ${LINUX_STANDIN} is not there; the preset test builds it")
  return()
endif()
execute_process(COMMAND ${LINUX_STANDIN} snapshot ${MODEL} ${FOLDER}/model.snap OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${EMULATOR} ${WINDOWS_STANDIN} --application "${installed}/creotk.dat" --language german run -
  INPUT_FILE ${SCRIPT} WORKING_DIRECTORY ${FOLDER} OUTPUT_VARIABLE told RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "the stand-in ended with ${failed}: ${told}")
endif()
foreach(text "Einstellungen" "model.rpk")
  if(NOT told MATCHES "${text}")
    message(FATAL_ERROR "nothing was told of ${text}: ${told}")
  endif()
endforeach()
if(NOT EXISTS ${FOLDER}/model.rpk)
  message(FATAL_ERROR "no package was written")
endif()
file(REMOVE_RECURSE ${FOLDER})
