# How everything here is compiled and linked, as interface targets that the others link privately:
# nothing of it reaches a program that uses the installed library.
#
#   tarvik_flags     warnings, sanitizers, coverage: every target
#   tarvik_hardened  checks for the shipped code, in optimized builds, and what fuzzing measures
#   tarvik_program   how a shipped program is linked

set(optimized "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
set(sanitizers "-fsanitize=address,undefined" "-fno-sanitize-recover=all")
if(TARVIK_SANITIZE STREQUAL "thread")
  set(sanitizers "-fsanitize=thread")
endif()
# With counters that can lie in the record's file, what a process did counts however it ended.
set(coverage "-fprofile-instr-generate" "-fcoverage-mapping"
             "SHELL:-mllvm -runtime-counter-relocation"
)

add_library(tarvik_flags INTERFACE)
target_compile_options(
  tarvik_flags
  INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wconversion
    -Wsign-conversion
    -Wshadow
    -Wcast-align
    -Wcast-qual
    -Wformat=2
    -Wundef
    -Wimplicit-fallthrough
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wduplicated-cond;-Wduplicated-branches;-Wlogical-op>
    $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<NOT:$<BOOL:${TARVIK_SANITIZE}>>>:-Wnull-dereference>
    $<$<BOOL:${TARVIK_WERROR}>:-Werror>
    $<$<BOOL:${TARVIK_SANITIZE}>:${sanitizers};-fno-omit-frame-pointer>
    "$<$<BOOL:${TARVIK_COVERAGE}>:${coverage}>"
)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # gcc 12 sees overlapping copies in std::string's operator+ where there are none.
  target_compile_options(tarvik_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
target_compile_definitions(tarvik_flags INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
target_link_options(
  tarvik_flags
  INTERFACE
    $<$<BOOL:${TARVIK_SANITIZE}>:${sanitizers}>
    $<$<BOOL:${TARVIK_COVERAGE}>:-fprofile-instr-generate>
)

# The library's own calls to its public functions are direct: no program may put itself between.
add_library(tarvik_hardened INTERFACE)
target_compile_options(
  tarvik_hardened
  INTERFACE
    -fno-semantic-interposition
    -ffunction-sections
    -fdata-sections
    $<${optimized}:-fstack-protector-strong>
)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  target_compile_options(tarvik_hardened INTERFACE $<${optimized}:-fcf-protection>)
endif()
# A distribution's own choice, in the flags of the environment, holds.
if(NOT TARVIK_SANITIZE AND NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
  target_compile_options(
    tarvik_hardened INTERFACE $<${optimized}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>
  )
endif()
if(TARVIK_FUZZ AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(tarvik_hardened INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Bringing the C++ runtime along saves the dynamic linker's time at each start.
add_library(tarvik_program INTERFACE)
target_link_options(tarvik_program INTERFACE -Wl,-z,relro,-z,now -Wl,--gc-sections)
if(NOT TARVIK_SANITIZE AND NOT TARVIK_COVERAGE)
  target_link_options(
    tarvik_program
    INTERFACE $<$<AND:${optimized},$<BOOL:${TARVIK_STATIC_RUNTIME}>>:-static-libstdc++;-static-libgcc>
  )
endif()
