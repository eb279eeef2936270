# Target coverage: how many lines of the shipped code the tests ran, file by file.  Run the tests with
# the preset of the same name first; it says where the records go.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "TARVIK_COVERAGE needs clang.")
endif()
find_program(LLVM_PROFDATA NAMES llvm-profdata-14 llvm-profdata REQUIRED)
find_program(LLVM_COV NAMES llvm-cov-14 llvm-cov REQUIRED)

set(programs "")
# llvm-cov takes the first program bare and each other one after -object.
foreach(
  name IN
  ITEMS tarvik
        sdblk_command
        sdblk_python
        tests_cmd
        tests_sdblk
        tests_seed
        tests_support
        tests_threads
        tests_views
        tests_whole
)
  if(TARGET ${name})
    list(APPEND programs "$<TARGET_FILE:${name}>")
  endif()
endforeach()
list(JOIN programs ";-object;" programs)
add_custom_target(
  coverage
  COMMAND sh -c "\"$0\" merge -sparse -o coverage.profdata coverage/*.profraw" "${LLVM_PROFDATA}"
  COMMAND "${LLVM_COV}" report -instr-profile=coverage.profdata ${programs}
          "-ignore-filename-regex=/(tests|samples)/"
  WORKING_DIRECTORY "${PROJECT_BINARY_DIR}"
  VERBATIM
)
