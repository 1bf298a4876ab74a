# Helpers shared by every folder's CMakeLists.

# tavik_test(NAME <name> SOURCES <files...> LIBS <targets...> [TMPDIR <dir>])
# One GoogleTest program; each test case runs as its own ctest test, so
# process-wide state (module load, start-up) is fresh for every case. TMPDIR
# gives the program a temporary directory of its own.
function(tavik_test)
  cmake_parse_arguments(T "" "NAME;TMPDIR" "SOURCES;LIBS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main GTest::gmock
                        Threads::Threads)
  target_include_directories(${T_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  set(properties ENVIRONMENT "TAVIK_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  if(T_TMPDIR)
    file(MAKE_DIRECTORY ${T_TMPDIR})
    list(APPEND properties ENVIRONMENT_MODIFICATION "TMPDIR=set:${T_TMPDIR}")
  endif()
  gtest_discover_tests(${T_NAME} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES ${properties})
endfunction()

# tavik_bench(NAME <name> SOURCES <files...> LIBS <targets...>)
function(tavik_bench)
  cmake_parse_arguments(B "" "NAME" "SOURCES;LIBS" ${ARGN})
  add_executable(${B_NAME} ${B_SOURCES})
  target_link_libraries(${B_NAME} PRIVATE ${B_LIBS} benchmark::benchmark benchmark::benchmark_main
                        Threads::Threads)
endfunction()
