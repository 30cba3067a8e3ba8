# How everything in this repository is compiled and where it lands.
include(GNUInstallDirs)

option(NOX_BUILD_TESTS "Build the tests" ON)
option(NOX_BUILD_BENCH "Build the benchmarks" OFF)
option(NOX_BUILD_FUZZERS "Build the fuzz targets with the fuzzing engine (Clang)" OFF)
set(NOX_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Lines and functions are what a stack trace needs; all the rest of the debug information costs a
# third of the time to compile.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(NOX_PLUGIN_INSTALL_DIR "${CMAKE_INSTALL_LIBDIR}/nox")
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${NOX_PLUGIN_INSTALL_DIR}")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

include_directories("${CMAKE_SOURCE_DIR}")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wcast-align -Wformat=2 -Werror
  -fno-omit-frame-pointer -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A unique symbol would pin a plug-in in memory for good: it could never be unloaded.
  add_compile_options(-fno-gnu-unique -Wduplicated-cond -Wlogical-op)
else()
  add_compile_options(-Wthread-safety)
endif()

# Directory entries and files past 2 GiB exist on 32-bit machines too. time_t stays what long is.
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(NOX_SANITIZE)
  add_compile_options(-fsanitize=${NOX_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${NOX_SANITIZE})
else()
  add_link_options(-Wl,--no-undefined -Wl,--as-needed)
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endif()

if(NOX_BUILD_FUZZERS)
  if(NOT NOX_SANITIZE OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "NOX_BUILD_FUZZERS needs Clang and a sanitizer: a fuzz target that nothing "
      "watches finds only crashes. Use the preset fuzz.")
  endif()
  # Everything tells the engine where it has been.
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()

find_package(Threads REQUIRED)

function(nox_add_folders)
  foreach(folder IN LISTS ARGN)
    add_subdirectory(${folder})
  endforeach()
endfunction()
