# A maker's name with characters that mean something in C++ stands in the build as it was given.
#
#   SOURCE  the project   GENERATOR  of its builds   SCRATCH  a folder to work in

cmake_minimum_required(VERSION 3.25)

execute_process(
  COMMAND ${CMAKE_COMMAND} -S "${SOURCE}" -B "${SCRATCH}" -G "${GENERATOR}" -DTARVIK_TESTS=OFF
          [[-DTARVIK_MAKER=The "Old" \ Maker]]
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY
)
file(READ "${SCRATCH}/support/generated/build_contact.h" header)
string(FIND "${header}" [[kMaker[] = "The \"Old\" \\ Maker";]] at)
if(at LESS 0)
  message(SEND_ERROR "${header}")
endif()
