# Where the toolkit's operations come from on Windows: the target creo_toolkit.
#
# With CREO_TOOLKIT_ROOT the vendor's headers and library are used. Without it MinGW links against an import library
# that is made from the list of operations here, and the loader finds them in the module of the name RENDARA_CAD_HOST.
set(CREO_TOOLKIT_ROOT "" CACHE PATH "The toolkit's folder in the CAD system's installation (.../protoolkit)")
set(RENDARA_CAD_HOST "xtop.exe" CACHE STRING "The module that provides the toolkit's operations; not used with CREO_TOOLKIT_ROOT")

add_library(creo_toolkit INTERFACE)
if(CREO_TOOLKIT_ROOT)
  find_path(CREO_TOOLKIT_INCLUDE ProToolkit.h PATHS ${CREO_TOOLKIT_ROOT}/includes NO_DEFAULT_PATH REQUIRED)
  find_library(CREO_TOOLKIT_LIBRARY NAMES protk_dll_NU protk_dll PATHS ${CREO_TOOLKIT_ROOT}/i486_nt/obj
    NO_DEFAULT_PATH REQUIRED)
  target_include_directories(creo_toolkit SYSTEM INTERFACE ${CREO_TOOLKIT_INCLUDE})
  target_compile_definitions(creo_toolkit INTERFACE RENDARA_VENDOR_TOOLKIT PRO_MACHINE=29 PRO_OS=4 PRO_USE_VAR_ARGS)
  target_link_libraries(creo_toolkit INTERFACE ${CREO_TOOLKIT_LIBRARY} mpr netapi32 psapi ws2_32 wsock32)
elseif(MINGW)
  find_program(RENDARA_DLLTOOL i686-w64-mingw32-dlltool REQUIRED)
  set(host_definition ${CMAKE_SOURCE_DIR}/platform/creo_host.def)
  set(host_library ${CMAKE_BINARY_DIR}/libcreo_host.a)
  add_custom_command(OUTPUT ${host_library}
    COMMAND ${RENDARA_DLLTOOL} --deterministic-libraries --input-def ${host_definition} --dllname ${RENDARA_CAD_HOST} --output-lib ${host_library}
    DEPENDS ${host_definition})
  add_custom_target(creo_host_library DEPENDS ${host_library})
  add_dependencies(creo_toolkit creo_host_library)
  target_link_libraries(creo_toolkit INTERFACE ${host_library})
else()
  message(FATAL_ERROR "CREO_TOOLKIT_ROOT is not set: this compiler needs the toolkit's folder in the CAD system's installation")
endif()
