# The installed tree: the plug-in with its texts and icons as the CAD system finds them, the stand-in's programs, and
# the sample.
set(RENDARA_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/rendara)
set(RENDARA_DATA_DIR ${CMAKE_INSTALL_DATADIR}/rendara)

install(TARGETS rendara_creo
  LIBRARY DESTINATION ${RENDARA_PLUGIN_DIR} COMPONENT plugin
  RUNTIME DESTINATION ${RENDARA_PLUGIN_DIR} COMPONENT plugin)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/resources/text DESTINATION ${RENDARA_DATA_DIR} COMPONENT plugin)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/resources/resource DESTINATION ${RENDARA_DATA_DIR} COMPONENT plugin
  FILES_MATCHING PATTERN "*.png")

if(RENDARA_TOOLS)
  install(TARGETS rpk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
if(RENDARA_STANDIN)
  install(TARGETS creo-standin renderer-standin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT standin)
  install(TARGETS standin_cad standin_windows vntrendaralive64 LIBRARY DESTINATION ${RENDARA_PLUGIN_DIR} COMPONENT standin)
  install(DIRECTORY ${CMAKE_SOURCE_DIR}/samples DESTINATION ${RENDARA_DATA_DIR} COMPONENT standin)
endif()
