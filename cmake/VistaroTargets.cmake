# How every target of this tree is declared: one place for warnings, sanitizers and include paths.

add_library(vistaro_options INTERFACE)
target_compile_options(vistaro_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
  # clang complains of what g++ 12's std::stable_sort calls.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>)
# Lets ccache tell what a precompiled header stands for.
target_compile_options(vistaro_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
target_compile_definitions(vistaro_options INTERFACE
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(VT_SANITIZE)
  target_compile_options(vistaro_options INTERFACE
    -fsanitize=${VT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    # g++ 12 warns of the unused alternatives of a std::variant once it instruments the code.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(vistaro_options INTERFACE -fsanitize=${VT_SANITIZE})
endif()

# vt_source_definition(FILE NAME="value"), a path of this build: the other sources compile to the same
# in every checkout, so that a compiler cache knows them.
function(vt_source_definition source definition)
  set_property(SOURCE ${source} APPEND PROPERTY COMPILE_DEFINITIONS ${definition})
endfunction()

# vt_library(NAME SOURCES a.cpp … [PUBLIC lib …] [PRIVATE lib …])
function(vt_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE vistaro_options ${ARG_PRIVATE})
endfunction()

# vt_program(NAME SOURCES a.cpp … LIBRARIES lib …), into the build's folder bin
function(vt_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vistaro_options ${ARG_LIBRARIES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()

# vt_test(NAME SOURCES a_test.cpp … LIBRARIES lib … [TIMEOUT seconds] [LOCK resource])
# Every TEST becomes a ctest entry of its own, so that a failure names itself. Tests with the same
# LOCK never run at once.
function(vt_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT;LOCK" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vistaro_options vistaro_test_places ${ARG_LIBRARIES}
    GTest::gmock GTest::gtest_main)
  target_precompile_headers(${name} REUSE_FROM vistaro_test_headers)
  if(VT_SANITIZE MATCHES undefined)
    # These would take half of the time of compiling tests. What is tested is compiled with them, and the
    # address sanitizer finds most of it as well.
    target_compile_options(${name} PRIVATE -fno-sanitize=null,vptr,alignment,object-size)
  endif()
  # g++ 12 forgets of a precompiled header that it is the system's, and sees errors in its std::string
  # that are not there. The libraries under test are compiled with these warnings.
  target_compile_options(${name} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-dangling-pointer;-Wno-free-nonheap-object>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-nonnull;-Wno-restrict>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow;-Wno-stringop-overread>)
  set(properties TIMEOUT ${ARG_TIMEOUT})
  if(ARG_LOCK)
    list(APPEND properties RESOURCE_LOCK ${ARG_LOCK})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()

# vt_test_program(NAME SOURCES a.cpp … LIBRARIES lib …), that tests start, into the build's folder tests
function(vt_test_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE vistaro_options ${ARG_LIBRARIES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
endfunction()

# vt_fuzzer(NAME SOURCES a_fuzz.cpp LIBRARIES lib …)
# With clang and VT_FUZZERS a libFuzzer target; always a ctest entry that replays the stored corpus
# tests/fuzz/corpus/NAME, so that a found input stays a test in every build.
function(vt_fuzzer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  set(corpus ${PROJECT_SOURCE_DIR}/tests/fuzz/corpus/${name})
  add_executable(${name}_replay ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/tests/fuzz/replay_main.cpp)
  target_link_libraries(${name}_replay PRIVATE vistaro_options vistaro_test_places ${ARG_LIBRARIES})
  add_test(NAME ${name}_replay COMMAND ${name}_replay ${corpus})
  if(VT_FUZZERS)
    add_executable(${name} ${ARG_SOURCES})
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE vistaro_options vistaro_test_places ${ARG_LIBRARIES})
  endif()
endfunction()

# vt_benchmark(NAME SOURCES a_bench.cpp LIBRARIES lib …)
function(vt_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vistaro_options vistaro_test_places ${ARG_LIBRARIES}
    benchmark::benchmark)
endfunction()
