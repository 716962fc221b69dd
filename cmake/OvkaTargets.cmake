# How every target of the project is made: one interface target for the options, one function a kind.

add_library(ovka_options INTERFACE)
target_compile_features(ovka_options INTERFACE cxx_std_20)
target_compile_options(
  ovka_options
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Werror
            # Rounding is part of the system: no fused multiply-add where the source has two operations.
            -ffp-contract=off
            -fno-fast-math)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 warns falsely about string concatenation (its bug 105651).
  target_compile_options(ovka_options INTERFACE -Wno-restrict)
endif()

if(OVKA_SANITIZE)
  target_compile_options(ovka_options INTERFACE -fsanitize=${OVKA_SANITIZE} -fno-omit-frame-pointer
                                                -fno-sanitize-recover=all)
  target_link_options(ovka_options INTERFACE -fsanitize=${OVKA_SANITIZE})
  # The sanitizers' own instrumentation sets off false reports of these two in GCC 12.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(ovka_options INTERFACE -Wno-maybe-uninitialized -Wno-tsan)
  endif()
endif()

if(OVKA_FUZZERS)
  # The rooms report their branches to the fuzzer; its main function comes with the fuzz programs alone.
  target_compile_options(ovka_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# ovka_library(NAME [DEPENDS target...]): a room: every .cpp file of this folder. It shows only its own
# folder to others, so an include that runs up the house does not compile.
function(ovka_library name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_library(${name} STATIC ${sources})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ovka_options ${ARG_DEPENDS})
endfunction()

# ovka_headers(NAME [DEPENDS target...]): a room of headers only.
function(ovka_headers name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  add_library(${name} INTERFACE)
  target_include_directories(${name} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} INTERFACE ovka_options ${ARG_DEPENDS})
endfunction()

# ovka_test(FOLDER [DEPENDS target...] [LABELS label...] [TIMEOUT seconds] [ALONE]): the doctest program of
# every .cpp file in tests/FOLDER, one CTest entry a test case. A case that prints "skipped: REASON" counts
# as skipped, not as passed. ALONE: no other test runs beside it, because it keeps up with real time.
function(ovka_test folder)
  cmake_parse_arguments(ARG "ALONE" "TIMEOUT" "DEPENDS;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set(properties TIMEOUT ${ARG_TIMEOUT} SKIP_REGULAR_EXPRESSION "skipped: ")
  if(ARG_LABELS)
    list(APPEND properties LABELS "${ARG_LABELS}")
  endif()
  if(ARG_ALONE)
    list(APPEND properties RUN_SERIAL TRUE)
  endif()
  string(REPLACE "/" "_" name "test_${folder}")
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${folder}/*.cpp)
  add_executable(${name} ${sources} ${PROJECT_SOURCE_DIR}/tests/support/main.cpp)
  target_link_libraries(${name} PRIVATE ovka_options doctest::doctest ${ARG_DEPENDS})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  doctest_discover_tests(
    ${name}
    TEST_PREFIX "${folder}: "
    PROPERTIES ${properties})
endfunction()

# ovka_benchmark(NAME source... [DEPENDS target...]): a Google Benchmark program.
function(ovka_benchmark name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ovka_options benchmark::benchmark ${ARG_DEPENDS})
endfunction()

# ovka_fuzzer(NAME source... [DEPENDS target...]): a libFuzzer program (clang only).
function(ovka_fuzzer name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ovka_options ${ARG_DEPENDS})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
