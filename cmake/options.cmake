# What the code is made for, also that of others.
add_library(rendara_machine INTERFACE)
if(WIN32)
  # Windows 7, the oldest that the CAD system runs on.
  target_compile_definitions(rendara_machine INTERFACE _WIN32_WINNT=0x0601)
endif()
if(MINGW)
  # Arithmetic as on 64-bit machines. Callers by other compilers keep the stack aligned to four bytes only.
  target_compile_options(rendara_machine INTERFACE -msse2 -mfpmath=sse -mstackrealign)
endif()

# How every target of the project is compiled.
add_library(rendara_options INTERFACE)
target_link_libraries(rendara_options INTERFACE rendara_machine)
target_include_directories(rendara_options INTERFACE ${CMAKE_SOURCE_DIR})
if(MSVC)
  target_compile_options(rendara_options INTERFACE /W4 /permissive- /utf-8 /fp:precise
    $<$<BOOL:${RENDARA_WARNINGS_AS_ERRORS}>:/WX>)
else()
  # No fused multiply-add: two compilers must give the same numbers.
  target_compile_options(rendara_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
    $<$<BOOL:${RENDARA_WARNINGS_AS_ERRORS}>:-Werror>)
  if(RENDARA_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A source that another includes is no header whose types many would see.
    target_compile_options(rendara_options INTERFACE -Wno-subobject-linkage)
  endif()
  if(MINGW)
    # The same build in any folder.
    target_compile_options(rendara_options INTERFACE -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
  endif()
  if(RENDARA_SANITIZER)
    target_compile_options(rendara_options INTERFACE -fsanitize=${RENDARA_SANITIZER} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    target_link_options(rendara_options INTERFACE -fsanitize=${RENDARA_SANITIZER})
    target_compile_definitions(rendara_options INTERFACE RENDARA_SANITIZED)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND RENDARA_SANITIZER MATCHES "^address")
      # In a library of its own: the runtime stands between the programs and the system's loader, and inside a program
      # it would have bare names looked for in that program's folders, too.
      execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-resource-dir OUTPUT_VARIABLE resources
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
      target_link_options(rendara_options INTERFACE -shared-libsan LINKER:-rpath,${resources}/lib/linux)
      # As the standard library and other compilers have it.
      target_compile_options(rendara_options INTERFACE -fsized-deallocation)
    endif()
  endif()
endif()

# For what takes the compiler longer to optimise, in a build that is made as a whole to be tested, than it ever runs.
function(rendara_spare_optimising)
  if(RENDARA_UNITY_BUILD)
    foreach(target IN LISTS ARGN)
      target_compile_options(${target} PRIVATE -O0)
    endforeach()
  endif()
endfunction()
