# How every target of the project is compiled.
add_library(rendara_options INTERFACE)
target_include_directories(rendara_options INTERFACE ${CMAKE_SOURCE_DIR})
if(MSVC)
  target_compile_options(rendara_options INTERFACE /W4 /permissive- /utf-8 /fp:precise
    $<$<BOOL:${RENDARA_WARNINGS_AS_ERRORS}>:/WX>)
else()
  # No fused multiply-add: two compilers must give the same numbers.
  target_compile_options(rendara_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
    $<$<BOOL:${RENDARA_WARNINGS_AS_ERRORS}>:-Werror>)
  if(RENDARA_SANITIZER)
    target_compile_options(rendara_options INTERFACE -fsanitize=${RENDARA_SANITIZER} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    target_link_options(rendara_options INTERFACE -fsanitize=${RENDARA_SANITIZER})
  endif()
endif()
