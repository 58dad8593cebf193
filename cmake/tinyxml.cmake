# TinyXML as the target tinyxml: the system's, or, for Windows by MinGW, built from Debian's sources.
if(MINGW)
  set(RENDARA_TINYXML_SOURCES ${CMAKE_BINARY_DIR}/tinyxml CACHE PATH "Where the sources of TinyXML are kept")
  if(NOT EXISTS ${RENDARA_TINYXML_SOURCES}/source/tinyxml.h)
    message(STATUS "Fetching TinyXML")
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/packaging/tinyxml/fetch ${RENDARA_TINYXML_SOURCES}
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
  set(tinyxml_source ${RENDARA_TINYXML_SOURCES}/source)
  add_library(tinyxml STATIC
    ${tinyxml_source}/tinystr.cpp
    ${tinyxml_source}/tinyxml.cpp
    ${tinyxml_source}/tinyxmlerror.cpp
    ${tinyxml_source}/tinyxmlparser.cpp)
  target_include_directories(tinyxml SYSTEM PUBLIC ${tinyxml_source})
  target_compile_options(tinyxml PRIVATE -ffile-prefix-map=${tinyxml_source}=tinyxml)
  target_compile_definitions(tinyxml PUBLIC TIXML_USE_STL)
  target_link_libraries(tinyxml PRIVATE rendara_machine)
  set(TINYXML_LICENCE ${tinyxml_source}/debian/copyright)
else()
  find_path(TINYXML_INCLUDE_DIR tinyxml.h REQUIRED)
  find_library(TINYXML_LIBRARY tinyxml REQUIRED)
  add_library(tinyxml INTERFACE)
  target_include_directories(tinyxml SYSTEM INTERFACE ${TINYXML_INCLUDE_DIR})
  target_compile_definitions(tinyxml INTERFACE TIXML_USE_STL)
  target_link_libraries(tinyxml INTERFACE ${TINYXML_LIBRARY})
endif()
