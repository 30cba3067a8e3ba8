# One test program a folder; each is one ctest entry, so that one command runs them side by side.
#   OPTIMIZED   for the few whose own code does the long work
#   TIMEOUT     seconds, against a test that hangs: far more than sanitized code takes on a machine
#               that has other things to do
#   COST        the tests of the highest begin first; TIMEOUT when it is not given
include_guard()
find_package(GTest REQUIRED)

# Most of a test's compile time is the test library's headers and the optimizer: the first are
# compiled once for all, the second has nothing to do. What is tested keeps its own flags.
set(quick_flags)
if(NOX_SANITIZE)
  set(quick_flags -O0)
elseif(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
  set(quick_flags -O0 -g1 -U_FORTIFY_SOURCE)
endif()
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/TestHeaders.cpp" CONTENT "int main() {}\n")
add_executable(test_headers EXCLUDE_FROM_ALL "${CMAKE_BINARY_DIR}/TestHeaders.cpp")
target_compile_options(test_headers PRIVATE ${quick_flags})
target_link_libraries(test_headers PRIVATE GTest::gmock GTest::gtest)
target_precompile_headers(test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)

function(nox_add_test)
  cmake_parse_arguments(TEST "OPTIMIZED" "NAME;TIMEOUT;COST" "SOURCES;LINKS" ${ARGN})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 1200)
  endif()
  if(NOT TEST_COST)
    set(TEST_COST ${TEST_TIMEOUT})
  endif()
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  target_link_libraries(${TEST_NAME} PRIVATE ${TEST_LINKS} GTest::gmock GTest::gtest_main)
  if(NOT TEST_OPTIMIZED)
    target_compile_options(${TEST_NAME} PRIVATE ${quick_flags})
    target_precompile_headers(${TEST_NAME} REUSE_FROM test_headers)
  endif()
  # Compiled together, a fixture in an unnamed namespace seems to come from a header.
  target_compile_options(${TEST_NAME} PRIVATE
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>")
  add_test(NAME ${TEST_NAME} COMMAND ${TEST_NAME} --gtest_brief=1)
  # What takes longest begins first, or it would run alone at the end.
  set_tests_properties(${TEST_NAME} PROPERTIES TIMEOUT ${TEST_TIMEOUT} COST ${TEST_COST})
endfunction()
