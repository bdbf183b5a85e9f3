# Helpers that give every module, test and fuzz target the same flags.

add_library(tenora_flags INTERFACE)
target_include_directories(tenora_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(tenora_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                              -Wno-sign-conversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees overlapping and endless copies in ordinary std::string concatenation (GCC bug
  # 105329); out of a precompiled header it says so too.
  target_compile_options(tenora_flags INTERFACE -Wno-array-bounds -Wno-restrict
                                                -Wno-stringop-overflow -Wno-stringop-overread)
endif()
if(TENORA_SANITIZE)
  target_compile_options(tenora_flags INTERFACE -fsanitize=address,undefined
                                                -fno-sanitize-recover=undefined
                                                -fno-omit-frame-pointer)
  target_link_options(tenora_flags INTERFACE -fsanitize=address,undefined)
endif()
if(TENORA_FUZZ)
  target_compile_options(tenora_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

include(cmake/precompiled.cmake)

# tenora_module(NAME SOURCES … LIBRARIES …): the static library of one folder under src/. LIBRARIES
# names only modules of lower layers and the external libraries that the module depends on.
function(tenora_module name)
  cmake_parse_arguments(MODULE "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(tenora_${name} STATIC ${MODULE_SOURCES})
  target_link_libraries(tenora_${name} PUBLIC tenora_flags ${MODULE_LIBRARIES})
  tenora_precompile(tenora_${name} ${MODULE_LIBRARIES})
endfunction()

# tenora_test(NAME SOURCES … LIBRARIES …): one GoogleTest program for the folder of the same name.
function(tenora_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name}_test ${TEST_SOURCES})
  target_link_libraries(${name}_test PRIVATE ${TEST_LIBRARIES} tenora_test_support
                                             GTest::gmock GTest::gtest_main)
  # Compiled like a library, with Qt or without, so that all tests can share a precompiled header.
  set_target_properties(${name}_test PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_compile_options(${name}_test PRIVATE -fPIC ${tenora_test_options})
  tenora_precompile(${name}_test GTest::gmock)
  add_test(NAME ${name} COMMAND ${name}_test)
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;TZ=UTC" TIMEOUT 300)
endfunction()

# Builds all fuzz programs.
add_custom_target(fuzzers)

# tenora_fuzz(NAME RUNS count SOURCES … LIBRARIES …): a libFuzzer program. As a test it starts from
# the kept corpus in tests/fuzz/NAME and tries the same inputs in the same order on every machine;
# what it has not seen is looked for with scripts/fuzz.sh.
function(tenora_fuzz name)
  cmake_parse_arguments(FUZZ "" "RUNS" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT TENORA_FUZZ)
    return()
  endif()
  add_executable(fuzz_${name} ${FUZZ_SOURCES})
  target_compile_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(fuzz_${name} PRIVATE ${FUZZ_LIBRARIES})
  add_dependencies(fuzzers fuzz_${name})
  add_test(NAME fuzz_${name}
           COMMAND ${CMAKE_SOURCE_DIR}/cmake/fuzz_test.sh $<TARGET_FILE:fuzz_${name}>
                   ${CMAKE_SOURCE_DIR}/tests/fuzz/${name} ${FUZZ_RUNS})
  set_tests_properties(fuzz_${name} PROPERTIES LABELS fuzz TIMEOUT 300)
endfunction()
