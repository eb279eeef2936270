# The tests of what is installed.  Instrumented libraries need options that a consumer does not give.
if(TARVIK_SANITIZE OR TARVIK_COVERAGE)
  return()
endif()

# The shared library as it is installed, in every build.
tarvik_add_library(sdblk_exports SHARED)
foreach(library IN ITEMS sdblk_exports sdblk)
  add_test(NAME consumer.${library}_has_the_public_names_and_no_others
           COMMAND ${CMAKE_COMMAND} "-DNM=${CMAKE_NM}" "-DLIBRARY=$<TARGET_FILE:${library}>"
                   "-DEXPECTED=${CMAKE_CURRENT_LIST_DIR}/exports.txt" -P
                   "${CMAKE_CURRENT_LIST_DIR}/exports.cmake"
  )
endforeach()

add_executable(consumer_shared "${CMAKE_CURRENT_LIST_DIR}/consumer.c")
target_link_libraries(consumer_shared PRIVATE sdblk_exports)
add_test(NAME consumer.works_with_the_shared_library COMMAND consumer_shared)

add_executable(consumer_namesakes "${CMAKE_CURRENT_LIST_DIR}/namesakes.c")
target_link_libraries(consumer_namesakes PRIVATE sdblk_exports)
add_test(NAME consumer.functions_of_the_same_names_change_nothing COMMAND consumer_namesakes)

add_test(NAME consumer.takes_it_in_as_a_folder
         COMMAND ${CMAKE_COMMAND} -S "${CMAKE_CURRENT_LIST_DIR}/embedded"
                 -B "${CMAKE_CURRENT_BINARY_DIR}/embedding" -G "${CMAKE_GENERATOR}"
                 "-DTARVIK=${PROJECT_SOURCE_DIR}" "-DCMAKE_C_COMPILER=${CMAKE_C_COMPILER}"
                 "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}"
)

if(TARVIK_INSTALL AND TARGET tarvik)
  find_program(PKG_CONFIG NAMES pkg-config pkgconf)
  add_test(
    NAME consumer.works_with_an_installed_copy
    COMMAND
      ${CMAKE_COMMAND} "-DBUILD_DIR=${PROJECT_BINARY_DIR}" "-DSOURCE_DIR=${PROJECT_SOURCE_DIR}"
      "-DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/consumer" "-DGENERATOR=${CMAKE_GENERATOR}"
      "-DCC=${CMAKE_C_COMPILER}" "-DCXX=${CMAKE_CXX_COMPILER}" "-DCONFIG=${CMAKE_BUILD_TYPE}"
      "-DPKG_CONFIG=$<$<BOOL:${PKG_CONFIG}>:${PKG_CONFIG}>" -P "${CMAKE_CURRENT_LIST_DIR}/run.cmake"
  )
  set_tests_properties(consumer.works_with_an_installed_copy PROPERTIES TIMEOUT 300)
endif()
