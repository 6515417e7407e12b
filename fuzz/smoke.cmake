# A short fuzz run of every reader as part of the test suite, where clang and
# its fuzzer runtime are installed (scripts/install-deps installs them). The
# fuzz build lives in its own directory inside this build and is made by the
# first of these tests; the sanitizer build leaves them out, it is one already.

set(BV_FUZZ_SMOKE_SECONDS 15 CACHE STRING "Seconds each fuzz target runs in the test suite")
find_program(BV_CLANGXX clang++-14)
file(GLOB BV_FUZZ_RUNTIME /usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a)
if(BV_CLANGXX AND BV_FUZZ_RUNTIME AND NOT BV_SANITIZE AND NOT BV_FUZZ)
  set(BV_FUZZ_DIR ${CMAKE_BINARY_DIR}/fuzz)
  add_test(NAME fuzz_build
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/fuzz --build-dir ${BV_FUZZ_DIR} --build-only)
  set_tests_properties(fuzz_build PROPERTIES FIXTURES_SETUP fuzzbuild TIMEOUT 1800)
  foreach(target tga 3ds track settings racesetup highscore ghost)
    add_test(NAME fuzz_smoke_${target}
      COMMAND ${CMAKE_SOURCE_DIR}/scripts/fuzz --build-dir ${BV_FUZZ_DIR}
              --seconds ${BV_FUZZ_SMOKE_SECONDS} ${target})
    set_tests_properties(fuzz_smoke_${target} PROPERTIES FIXTURES_REQUIRED fuzzbuild TIMEOUT 300)
  endforeach()
endif()
