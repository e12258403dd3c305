# vlm_add_test(<name> KIND <kind> [CONCURRENT] [TIMEOUT <seconds>] SOURCES <file>...
#              [LIBRARIES <target>...])
#
# A GoogleTest program each of whose cases is a test of its own, in a process of its own. KIND is
# unit, conformance, kernels, e2e or packaging; it becomes the label by which scripts/test runs and
# counts it. CONCURRENT marks programs whose cases use several threads: they also run under the
# thread sanitizer, as every end-to-end and conformance test does.
include(GoogleTest)
find_package(GTest REQUIRED)

set(VLM_TEST_KINDS unit conformance kernels e2e packaging)

function(vlm_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "CONCURRENT" "KIND;TIMEOUT" "SOURCES;LIBRARIES")
  if(NOT arg_KIND IN_LIST VLM_TEST_KINDS)
    message(FATAL_ERROR "${name}: KIND must be one of ${VLM_TEST_KINDS}")
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  set(labels ${arg_KIND})
  if(arg_CONCURRENT)
    set(labels "${arg_KIND}\\;concurrent")
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE
    ${arg_LIBRARIES} vlm_options GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${name}
    TEST_PREFIX ${name}:
    DISCOVERY_TIMEOUT 120
    PROPERTIES LABELS "${labels}" TIMEOUT ${arg_TIMEOUT})
endfunction()
