# Options of every target of this project, in one interface target.

option(VELNOR_BENCHMARKS "Build the benchmarks against the peer libraries" ON)
option(VELNOR_WARNINGS_AS_ERRORS "Stop at a compiler warning" OFF)
set(VELNOR_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined or thread")

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
# The built and the installed tree have the same shape, so that both are linked alike and a module finds its neighbours
# in both. A path of the build's own would be filled up with colons to the installed one's length, and to the loader
# nothing between two colons is the current folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN")

find_program(VELNOR_CCACHE ccache)
if(VELNOR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${VELNOR_CCACHE})
endif()

file(RELATIVE_PATH VELNOR_RELATIVE_SOURCE_DIR ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
string(REGEX REPLACE "/$" "" VELNOR_RELATIVE_SOURCE_DIR "${VELNOR_RELATIVE_SOURCE_DIR}")

add_library(VelnorOptions INTERFACE)
target_compile_features(VelnorOptions INTERFACE cxx_std_20)
target_compile_options(VelnorOptions INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  # g++ 12 at -O3 takes a text literal plus a std::string for overlapping copies (its bug 105329).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # Tables and fields must be the same bytes with and without fused multiply-add.
  -ffp-contract=off
  # __FILE__ reads "Proc/Host/Image.cpp", in messages and in exceptions, wherever the tree lies; ccache may have made
  # the path relative to the build folder before the compiler sees it.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
  -ffile-prefix-map=${VELNOR_RELATIVE_SOURCE_DIR}/=
  $<$<BOOL:${VELNOR_WARNINGS_AS_ERRORS}>:-Werror>)
target_include_directories(VelnorOptions INTERFACE ${PROJECT_SOURCE_DIR})
# Linked by an installed target, so it is exported; what it carries is for building this tree alone.
if(VELNOR_SANITIZE)
  target_compile_options(VelnorOptions INTERFACE
    -fsanitize=${VELNOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(VelnorOptions INTERFACE -fsanitize=${VELNOR_SANITIZE})
endif()

set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_CXX_EXTENSIONS OFF)
