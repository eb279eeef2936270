# Fails unless a shared library exports the public names and no others.
#
#   NM  the lister of symbols     LIBRARY  the shared library     EXPECTED  the names, sorted

cmake_minimum_required(VERSION 3.25)

execute_process(
  COMMAND "${NM}" --dynamic --defined-only --format=posix "${LIBRARY}"
  OUTPUT_VARIABLE listing
  COMMAND_ERROR_IS_FATAL ANY
)
# A line is a name and a letter; weak ones are pieces of the C++ library.
string(REGEX MATCHALL "[^\n ]+ [A-UX-Z] [^\n]*" lines "${listing}")
list(TRANSFORM lines REPLACE " .*" "")
list(SORT lines)
file(STRINGS "${EXPECTED}" expected)
list(SORT expected)
set(hidden ${expected})
list(REMOVE_ITEM hidden ${lines})
list(REMOVE_ITEM lines ${expected})
if(hidden OR lines)
  message(FATAL_ERROR "Public names that are not exported: ${hidden}\nExported besides: ${lines}")
endif()
