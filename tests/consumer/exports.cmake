# Fails unless a library gives its user the public names and no others.
#
#   NM  the lister of symbols     LIBRARY  static or shared     EXPECTED  the names, sorted

cmake_minimum_required(VERSION 3.25)

if(LIBRARY MATCHES "[.]a$")
  set(scope --extern-only)
else()
  set(scope --dynamic)
endif()
execute_process(
  COMMAND "${NM}" ${scope} --defined-only --format=posix "${LIBRARY}"
  OUTPUT_VARIABLE listing
  COMMAND_ERROR_IS_FATAL ANY
)
# A line is a name and a letter.  What stands in a namespace of ours, in the C++ library's, or was
# made up by the compiler clashes with nobody.
string(REGEX MATCHALL "[^\n ]+ [A-Za-z] [^\n]*" lines "${listing}")
list(TRANSFORM lines REPLACE " .*" "")
list(FILTER lines EXCLUDE REGEX "^_Z[A-Z]*(6tarvik|5sdblk|S[a-z]|9__gnu_cxx)|^DW[.]ref[.]|^__clang_call_terminate$")
list(SORT lines)
list(REMOVE_DUPLICATES lines)
file(STRINGS "${EXPECTED}" expected)
list(SORT expected)
set(hidden ${expected})
list(REMOVE_ITEM hidden ${lines})
list(REMOVE_ITEM lines ${expected})
if(hidden OR lines)
  message(FATAL_ERROR "Public names that are not there: ${hidden}\nOthers: ${lines}")
endif()
