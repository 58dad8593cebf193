# The archive for users: everything that the CAD system needs, laid out as it looks for it.
install(TARGETS rendara_creo RUNTIME DESTINATION . COMPONENT plugin)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/windows/creotk.dat DESTINATION . COMPONENT plugin)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/resources/text DESTINATION . COMPONENT plugin)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/resources/resource DESTINATION . COMPONENT plugin FILES_MATCHING PATTERN "*.png")

# Texts for Windows' own editor.
configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/INSTALL.txt ${CMAKE_BINARY_DIR}/package/INSTALL.txt
  @ONLY NEWLINE_STYLE CRLF)
install(FILES ${CMAKE_BINARY_DIR}/package/INSTALL.txt DESTINATION . COMPONENT plugin)

# Licences of what is linked in, as the packages that it comes from tell them.
if(MINGW)
  install(FILES ${TINYXML_LICENCE} DESTINATION licences RENAME tinyxml.txt COMPONENT plugin)
  install(FILES /usr/share/doc/gcc-mingw-w64-i686-posix-runtime/copyright DESTINATION licences
    RENAME gcc-runtime.txt COMPONENT plugin)
  install(FILES /usr/share/doc/mingw-w64-i686-dev/copyright DESTINATION licences
    RENAME mingw-w64-runtime.txt COMPONENT plugin)
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME rendara-creo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME rendara-creo-${PROJECT_VERSION}-win32)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL plugin)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_STRIP_FILES OFF)
include(CPack)
