# tests/fuzz: a harness for each parser, for libFuzzer (the preset "fuzz") and for a test that
# replays what is kept.
file(GLOB harnesses CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/fuzz/harnesses/*.cc")
add_library(zv_fuzz_harnesses STATIC ${harnesses})
target_include_directories(zv_fuzz_harnesses PUBLIC "${CMAKE_SOURCE_DIR}/tests/fuzz")
target_link_libraries(zv_fuzz_harnesses PUBLIC zv_cli)

if(ZV_FUZZ)
  add_executable(zv-fuzz tests/fuzz/libfuzzer.cc)
  target_link_libraries(zv-fuzz PRIVATE zv_fuzz_harnesses)
  target_link_options(zv-fuzz PRIVATE -fsanitize=fuzzer)
endif()

if(ZV_TESTS)
  add_executable(zv-fuzz-replay tests/fuzz/replay_test.cc)
  target_compile_definitions(zv-fuzz-replay PRIVATE
    ZV_FUZZ_SEEDS="${CMAKE_SOURCE_DIR}/build/fuzz-seeds"
    ZV_FUZZ_FOUND="${CMAKE_SOURCE_DIR}/tests/fuzz/found")
  target_link_libraries(zv-fuzz-replay PRIVATE zv_fuzz_harnesses GTest::gtest GTest::gtest_main)
endif()
