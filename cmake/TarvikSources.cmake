# A list of source files, all of which must be there: a test that is missing must not go unnoticed.
function(tarvik_existing out)
  foreach(file IN LISTS ARGN)
    if(NOT EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
      message(FATAL_ERROR "There is no ${CMAKE_CURRENT_SOURCE_DIR}/${file}.")
    endif()
  endforeach()
  set(${out} "${ARGN}" PARENT_SCOPE)
endfunction()
