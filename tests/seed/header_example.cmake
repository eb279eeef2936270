# The program in the head of sdblk.h compiles as it stands there, and does what is said of it.
set(header "${PROJECT_SOURCE_DIR}/seed/sdblk.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
file(READ "${header}" text)
string(FIND "${text}" " *     #include <stdio.h>\n" start)
if(start EQUAL -1)
  message(FATAL_ERROR "${header} has no program in its head.")
endif()
string(SUBSTRING "${text}" ${start} -1 text)
string(FIND "${text}" "\n *     }\n" end)
math(EXPR end "${end} + 10")
string(SUBSTRING "${text}" 0 ${end} text)
string(REGEX REPLACE "(^|\n) \\*( ( ( ( ( )?)?)?)?)?" "\\1" text "${text}")
set(folder "${CMAKE_CURRENT_BINARY_DIR}/header_program")
file(CONFIGURE OUTPUT "${folder}/program.c" CONTENT "${text}" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/samples/demo.seed" "${folder}/dataless.seed" COPYONLY)

add_executable(header_example "${folder}/program.c")
target_link_libraries(header_example PRIVATE sdblk tarvik_flags)
add_test(NAME header.example_prints_stations COMMAND header_example WORKING_DIRECTORY "${folder}")
set_tests_properties(
  header.example_prints_stations
  PROPERTIES PASS_REGULAR_EXPRESSION "^DYNGA 64.993100\nSKERA 61.952800\nFJELL 61.482500\n$"
)
