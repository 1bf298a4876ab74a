# Helpers shared by every folder's CMakeLists.

# tavik_test(NAME <name> SOURCES <files...> LIBS <targets...>)
# One GoogleTest program; each test case runs as its own ctest test, so
# process-wide state (module load, start-up) is fresh for every case.
function(tavik_test)
  cmake_parse_arguments(T "" "NAME" "SOURCES;LIBS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main GTest::gmock
                        Threads::Threads)
  target_include_directories(${T_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  gtest_discover_tests(${T_NAME} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES ENVIRONMENT "TAVIK_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()

# tavik_bench(NAME <name> SOURCES <files...> LIBS <targets...>)
function(tavik_bench)
  cmake_parse_arguments(B "" "NAME" "SOURCES;LIBS" ${ARGN})
  add_executable(${B_NAME} ${B_SOURCES})
  target_link_libraries(${B_NAME} PRIVATE ${B_LIBS} benchmark::benchmark benchmark::benchmark_main
                        Threads::Threads)
endfunction()
