# How everything in this repository is compiled and where it lands.
include(GNUInstallDirs)

option(NOX_BUILD_TESTS "Build the tests" ON)
option(NOX_BUILD_BENCH "Build the benchmarks" OFF)
option(NOX_BUILD_FUZZERS "Build the fuzz targets with the fuzzing engine (Clang)" OFF)
option(NOX_PRECOMPILE "Compile the standard library's headers once for all files" ON)
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

# Where files are compiled together (CMAKE_UNITY_BUILD), a program or library of usual size is one or
# two units: most of what a file costs is what it includes. Large ones become several, for two cores.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 20)

# nox_compile_quickly(file...): for files that are mostly a library's templates and wait for people,
# sockets and disks. There the optimizer is a third of the time and no gain, and of sanitized code
# nine tenths. Without any, templates cost more again: each of their small functions is written out.
function(nox_compile_quickly)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_PRECOMPILE_HEADERS ON
    COMPILE_OPTIONS "$<IF:$<CONFIG:Debug>,-O0,-Og>")
endfunction()

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

# A compiler cache, where there is one: with it, what was compiled before costs nothing, also in
# another folder. It has to be told that a precompiled header is as good as the headers themselves.
find_program(NOX_CCACHE ccache)
if(NOX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros "${NOX_CCACHE}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fpch-preprocess)
  else()
    add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
  endif()
endif()

# nox_precompile(Target...): the headers of the standard library are half the work in a usual file.
# They are compiled once for all libraries, which have the same flags.
if(NOX_PRECOMPILE)
  file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/StandardHeaders.cpp" CONTENT "\n")
  add_library(standard_headers OBJECT EXCLUDE_FROM_ALL "${CMAKE_BINARY_DIR}/StandardHeaders.cpp")
  target_precompile_headers(standard_headers PRIVATE <algorithm> <array> <atomic> <chrono> <cstdint>
    <ctime> <functional> <map> <memory> <mutex> <optional> <set> <sstream> <string> <string_view>
    <utility> <variant> <vector>)
endif()
function(nox_precompile)
  if(NOX_PRECOMPILE)
    foreach(target IN LISTS ARGN)
      target_precompile_headers(${target} REUSE_FROM standard_headers)
      # GCC forgets of a precompiled header that it is the system's, and warns of what its optimizer
      # makes of std::string. The build that precompiles nothing keeps these warnings.
      target_compile_options(${target} PRIVATE
        "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-restrict;-Wno-stringop-overflow>")
    endforeach()
  endif()
endfunction()

function(nox_add_folders)
  foreach(folder IN LISTS ARGN)
    add_subdirectory(${folder})
  endforeach()
endfunction()
