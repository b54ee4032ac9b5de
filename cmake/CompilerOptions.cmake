# What every target of the project is compiled with.
add_library(vkcl_options INTERFACE)
target_compile_features(vkcl_options INTERFACE cxx_std_20)

if(MSVC)
  target_compile_options(vkcl_options INTERFACE /W4 /utf-8 /fp:precise)
  if(VKCL_WARNINGS_AS_ERRORS)
    target_compile_options(vkcl_options INTERFACE /WX)
  endif()
else()
  # Contraction would round differently from machine to machine; stored curves are the same bytes
  # everywhere.
  target_compile_options(vkcl_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                                -ffp-contract=off)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # At -O3 GCC 12 takes a text in front of a string for memory that overlaps (its bug 105651).
    # clang-tidy reads the commands of another configuration, and does not know the warning.
    target_compile_options(vkcl_options INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
  endif()
  if(VKCL_WARNINGS_AS_ERRORS)
    target_compile_options(vkcl_options INTERFACE -Werror)
  endif()
endif()

set(VKCL_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
if(VKCL_SANITIZE)
  target_compile_options(vkcl_options INTERFACE -fsanitize=${VKCL_SANITIZE}
                                                -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vkcl_options INTERFACE -fsanitize=${VKCL_SANITIZE})
endif()
