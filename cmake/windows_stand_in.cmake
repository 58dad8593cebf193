# What the stand-in and the tests are built with for Windows: header-only libraries and Google Test's sources, as Debian
# installs them for this machine. Its header folder itself must not be searched, it holds another C library's headers.
set(header_links ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${header_links})
foreach(library CLI fmt nlohmann)
  if(NOT EXISTS /usr/include/${library})
    message(FATAL_ERROR "/usr/include/${library} is missing")
  endif()
  file(CREATE_LINK /usr/include/${library} ${header_links}/${library} SYMBOLIC)
endforeach()
foreach(name CLI11::CLI11 fmt::fmt nlohmann_json::nlohmann_json)
  add_library(${name} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${name} SYSTEM INTERFACE ${header_links})
endforeach()
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
# They are found by being there.
foreach(package CLI11 fmt nlohmann_json GTest)
  file(WRITE ${CMAKE_BINARY_DIR}/packages/${package}Config.cmake "")
  set(${package}_DIR ${CMAKE_BINARY_DIR}/packages CACHE PATH "" FORCE)
endforeach()

# One C++ runtime for all of the stand-in's modules, since exceptions pass between them; beside the programs.
foreach(runtime libstdc++-6.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}
    OUTPUT_VARIABLE runtime_file OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE ${runtime_file})
    message(FATAL_ERROR "${runtime} is not there")
  endif()
  file(COPY ${runtime_file} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)
endforeach()

if(RENDARA_TESTS)
  set(BUILD_SHARED_LIBS OFF)
  set(INSTALL_GTEST OFF CACHE INTERNAL "")
  set(BUILD_GMOCK OFF CACHE INTERNAL "")
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  add_library(GTest::gtest_main ALIAS gtest_main)
  add_library(GTest::gtest ALIAS gtest)
endif()
