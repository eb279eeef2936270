# Which build identifier cmake/build_id.cmake writes for a tree that is no git checkout.
#
#   SCRIPT  cmake/build_id.cmake   SCRATCH  a folder to work in

cmake_minimum_required(VERSION 3.25)

set(recorded 0123456789abcdef0123456789abcdef01234567)
set(given fedcba9876543210fedcba9876543210fedcba98)
set(none 0000000000000000000000000000000000000000)

# expect(want content default): of a tree whose file BUILD_ID has the content, or has no such file.
function(expect want content default)
  file(REMOVE_RECURSE "${SCRATCH}")
  file(MAKE_DIRECTORY "${SCRATCH}")
  if(content)
    file(WRITE "${SCRATCH}/BUILD_ID" "${content}")
  endif()
  execute_process(
    COMMAND ${CMAKE_COMMAND} "-DSOURCE_DIR=${SCRATCH}" "-DOUTPUT=${SCRATCH}/build_id.h"
            "-DGIT=git" "-DDEFAULT=${default}" -P "${SCRIPT}" COMMAND_ERROR_IS_FATAL ANY
  )
  file(STRINGS "${SCRATCH}/build_id.h" line REGEX kBuildId)
  if(NOT line STREQUAL "inline constexpr char kBuildId[] = \"${want}\"\;")
    message(SEND_ERROR "BUILD_ID '${content}', default '${default}': ${line}")
  endif()
endfunction()

expect(${recorded} "${recorded}\n" "")
expect(${given} "${recorded}\n" ${given})
expect(${given} "" FEDCBA9876543210fedcba9876543210FEDCBA98)
expect(${recorded} "0123456789ABCDEF0123456789abcdef01234567\n" "")
expect(${none} "" "")
expect(${none} "${recorded}0\n" "")
expect(${none} "no identifier\n" "")

# A git that refuses the checkout, as it does when another user owns it, is no reason to stop, but to
# be told of.
file(MAKE_DIRECTORY "${SCRATCH}/.git")
file(WRITE "${SCRATCH}/git" "#!/bin/sh\necho 'fatal: detected dubious ownership' >&2\nexit 128\n")
file(CHMOD "${SCRATCH}/git" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
execute_process(
  COMMAND ${CMAKE_COMMAND} "-DSOURCE_DIR=${SCRATCH}" "-DOUTPUT=${SCRATCH}/build_id.h"
          "-DGIT=${SCRATCH}/git" "-DDEFAULT=" -P "${SCRIPT}"
  ERROR_VARIABLE said COMMAND_ERROR_IS_FATAL ANY
)
if(NOT said MATCHES "git does not tell the commit" OR NOT said MATCHES "dubious ownership")
  message(SEND_ERROR "A refusing git gives no warning: ${said}")
endif()
