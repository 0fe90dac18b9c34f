# SPDX-License-Identifier: MIT
# What every target of the tree is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_INSTALL_RPATH $ORIGIN)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
# Contract checks stay live in every build, so Release does not define NDEBUG.
set(CMAKE_CXX_FLAGS_RELEASE "-O3")

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_compile_options(
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # Unasked contraction would change results; std::fma stands where it is wanted.
  -ffp-contract=off
  # Exceptions name files by their path in the tree.
  -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)

if(QVAPI_SANITIZE)
  set(CMAKE_CXX_FLAGS_RELEASE "-O1")
  add_compile_options(-fsanitize=${QVAPI_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${QVAPI_SANITIZE})
endif()
